#!/usr/bin/env python3
"""store.py RADIOCTL [RUNS] [POINTS]: what "store report" takes, of time and of memory, with so many runs (100,000 when nobody
says) of so many points each (30), on SQLite and on a PostgreSQL of its own."""
import os
import pathlib
import random
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time
import uuid

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / 'tests/store'))


def rows(count, points):
    """Runs of units that are calibrated four times each, at eight stations and on a hundred days."""
    chance = random.Random(1)
    for number in range(count):
        begun = f'2026-{1 + number % 100 // 28:02}-{1 + number % 28:02}T09:{number % 60:02}:00Z'
        run = str(uuid.UUID(int=chance.getrandbits(128), version=4))
        head = (run, 'calibration', f'U{number // 4:06}', 'Board', '0123456789abcdef', '0.1.0', f'bench-{number % 8}', 'ada', begun, begun,
                'hardware', 1, 'fail' if number % 50 == 0 else 'pass', 0, '{}', points, 0)
        own = chance.gauss(0.0, 1.0)
        yield head, [(run, place + 1, 'leakage_after', 'dBc', 1, 18000000 + 1000 * place, 25, -72.0 + own + chance.gauss(0.0, 0.5), None, -65.0, 1)
                     for place in range(points)]


def fill_sqlite(file, count, points):
    database = sqlite3.connect(file)
    database.execute('PRAGMA synchronous = OFF')
    for head, measured in rows(count, points):
        database.execute(f'INSERT INTO runs VALUES ({",".join("?" * 17)})', head)
        database.executemany(f'INSERT INTO measurements VALUES ({",".join("?" * 11)})', measured)
    database.commit()
    database.close()


def fill_postgresql(server, count, points):
    def copy(table, lines):
        with subprocess.Popen([str(server.bin / 'psql'), '-X', '-q', '-d', server.url(), '-c', f'COPY {table} FROM STDIN'],
                              stdin=subprocess.PIPE, text=True) as psql:
            for row in lines:
                psql.stdin.write('\t'.join('\\N' if cell is None else str(cell) for cell in row) + '\n')
        assert psql.returncode == 0
    copy('runs', (head for head, _ in rows(count, points)))
    copy('measurements', (row for _, measured in rows(count, points) for row in measured))
    assert server.sql('ANALYZE').returncode == 0


def measure(program, store):
    """Seconds, processor seconds of the program, and the most memory that it took, in MiB."""
    begin = time.monotonic()
    process = subprocess.Popen([program, 'store', 'report', '--store', store], stdout=subprocess.PIPE)  # pylint: disable=consider-using-with
    shown = process.stdout.read().decode()
    _, status, usage = os.wait4(process.pid, 0)
    assert status == 0, shown
    print('   ', shown.splitlines()[0])
    return time.monotonic() - begin, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def main():
    program = os.path.abspath(sys.argv[1])
    os.environ['RADIOCTL'] = program
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100000
    points = int(sys.argv[3]) if len(sys.argv) > 3 else 30
    from support import Server
    folder = pathlib.Path(tempfile.mkdtemp(prefix='radioctl-store-'))
    server = Server()
    try:
        server.start()
        for name, store in (('SQLite', f'sqlite:{folder}/store.sqlite'), ('PostgreSQL', server.url())):
            subprocess.run([program, 'store', 'import', '/dev/null', '--store', store], check=True, stdout=subprocess.DEVNULL)
            if name == 'SQLite':
                fill_sqlite(folder / 'store.sqlite', count, points)
            else:
                fill_postgresql(server, count, points)
            seconds, processor, memory = measure(program, store)
            print(f'{name}: {count} runs of {points} points: {seconds:.1f} s, {processor:.1f} s of the program\'s processor time, '
                  f'{memory:.0f} MiB')
    finally:
        server.remove()
        shutil.rmtree(folder)


main()
