"""The power goes at every write of the program: of the store, of its journal, and of the file that waits."""
import os
import signal

from support import bench, exported, radioctl

STORE = 'sqlite:units.sqlite'
RUN = ('run', 'board.toml', 'script', '--store', STORE)


def test_cut_at_every_write_leaves_each_run_once_or_nothing_of_it(tmp_path):
    here = bench(tmp_path)
    assert radioctl(here, *RUN).returncode == 0
    assert radioctl(here, *RUN, LD_PRELOAD=os.environ['POWER_CUT'], POWER_CUT_COUNT=str(here / 'count')).returncode == 0
    writes = int((here / 'count').read_text())
    # The file that waits, the journal of SQLite, at least four tables and what makes them last.
    assert writes >= 12
    known = set(exported(here, STORE))
    reported = 0
    for step in range(1, writes + 1):
        ran = radioctl(here, *RUN, LD_PRELOAD=os.environ['POWER_CUT'], POWER_CUT_AT=str(step))
        assert ran.returncode == -signal.SIGKILL
        was_reported = 'Stored as run ' in ran.stdout
        was_waiting = {path.stem for path in here.glob('*.run')}
        assert radioctl(here, 'store', 'push', '--store', STORE).returncode == 0
        assert radioctl(here, 'store', 'check', '--store', STORE).returncode == 0
        now = set(exported(here, STORE))
        new = now - known
        assert known <= now and len(new) <= 1
        assert len(new) == 1 or not was_reported, f'write {step}: reported and lost'
        assert was_waiting <= now, f'write {step}: what waited is not there'
        assert not list(here.glob('*.run'))
        reported += len(new)
        known = now
    assert reported >= writes // 2


def test_cut_while_the_store_is_made_leaves_none_or_a_whole_one(tmp_path):
    # With POWER_CUT_STRIDE=1 at every write; the form is made in one transaction, where they are all alike.
    for step in range(1, 400, int(os.environ.get('POWER_CUT_STRIDE', '5'))):
        here = tmp_path / str(step)
        here.mkdir()
        bench(here)
        ran = radioctl(here, *RUN, LD_PRELOAD=os.environ['POWER_CUT'], POWER_CUT_AT=str(step))
        waits = {path.stem for path in here.glob('*.run')}
        assert radioctl(here, 'store', 'push', '--store', STORE).returncode == 0
        if waits:
            assert set(exported(here, STORE)) == waits
        if ran.returncode == 0:
            assert step > 12
            return
        assert ran.returncode == -signal.SIGKILL
    raise AssertionError('there are more writes than were tried')
