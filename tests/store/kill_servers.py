#!/usr/bin/env python3
"""kill_servers.py RADIOCTL KILLS [STATIONS]: stations add runs to a PostgreSQL of their own, which is killed so many times
meanwhile. Every run that was reported stored has to be there once, and none may be half."""
import os
import pathlib
import random
import shutil
import sys
import tempfile
import threading
import time


def station(url, folder, stop, reported, waited):
    import support
    while not stop.is_set():
        ran = support.accept(folder, url, '--station', folder.name, '--json')
        kept = support.event(ran, 'kept')
        assert ran.returncode == 0, ran.stderr
        (reported if kept['stored'] else waited).add(kept['run'])


def torment(kills, stations=8, seed=1):
    """Gives the runs that were reported, those that waited, and all that are in the store in the end."""
    import support
    chance = random.Random(seed)
    folder = pathlib.Path(tempfile.mkdtemp(prefix='radioctl-stations-'))
    server = support.Server()
    try:
        server.start()
        made = support.radioctl(folder, 'store', 'import', '/dev/null', '--store', server.url())
        assert made.returncode == 0, made.stderr
        stop, reported, waited = threading.Event(), set(), set()
        threads, failures = [], []

        def work(place):
            try:
                station(server.url(), place, stop, reported, waited)
            except BaseException as error:  # told by the main thread
                failures.append(error)
                stop.set()

        for number in range(stations):
            place = folder / f'bench-{number + 1}'
            place.mkdir()
            threads.append(threading.Thread(target=work, args=(support.bench(place),)))
            threads[-1].start()
        for _ in range(kills):
            time.sleep(chance.uniform(0.3, 1.0))
            server.kill()
            server.start()
        stop.set()
        for thread in threads:
            thread.join()
        if failures:
            raise failures[0]
        for number in range(stations):
            pushed = support.radioctl(folder / f'bench-{number + 1}', 'store', 'push', '--store', server.url())
            assert pushed.returncode == 0, pushed.stderr
        checked = support.radioctl(folder, 'store', 'check', '--store', server.url())
        assert checked.returncode == 0, checked.stdout + checked.stderr
        there = server.sql('SELECT id FROM runs').stdout.split()
        assert len(there) == len(set(there))
        assert reported <= set(there), 'reported and lost'
        assert waited <= set(there), 'waited and lost'
        assert set(there) <= reported | waited, 'there, and nobody knows it'
        return reported, waited, there
    finally:
        server.remove()
        shutil.rmtree(folder)


if __name__ == '__main__':
    os.environ['RADIOCTL'] = os.path.abspath(sys.argv[1])
    sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
    begin = time.monotonic()
    seen, queued, all_runs = torment(int(sys.argv[2]), int(sys.argv[3]) if len(sys.argv) > 3 else 8)
    print(f'{sys.argv[2]} kills in {time.monotonic() - begin:.0f} s: {len(seen)} runs reported stored, {len(queued)} waited and were '
          f'pushed, {len(all_runs)} in the store, each once and whole')
