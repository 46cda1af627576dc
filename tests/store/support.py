"""What the tests of the store share: the program, runs made up, and a PostgreSQL of the test's own."""
import json
import os
import pathlib
import pwd
import shutil
import signal
import subprocess
import tempfile
import time
import uuid

RADIOCTL = os.environ.get('RADIOCTL', 'radioctl')

BOARD = '''name = "Test radio"
serial = "8H-0001"

[[channel]]
number = 1
type = "rf-module"

[drivers]
"channel.1.tx.rf.frequency" = {}
"channel.1.rx.rf.frequency" = {}
'''
SCRIPT = 'tune tx 1 7442000\nexpect frequency tx 1 7442000\n'


def environment(folder, **more):
    """One in which the user has all folders below `folder`."""
    own = {name: str(folder / name.lower()) for name in ('XDG_CONFIG_HOME', 'XDG_DATA_HOME', 'XDG_STATE_HOME')}
    return {**os.environ, **own, **more}


def radioctl(folder, *arguments, **more):
    """Runs the program to its end in `folder`."""
    return subprocess.run([RADIOCTL, *map(str, arguments)], cwd=folder, env=environment(folder, **more), text=True,
                          capture_output=True, check=False, timeout=120)


def events(ran):
    return [json.loads(line) for line in ran.stdout.splitlines()]


def event(ran, name):
    return [one for one in events(ran) if one['event'] == name][0]


def bench(folder):
    """A board and a script in `folder`; a run of them is an acceptance run."""
    (folder / 'board.toml').write_text(BOARD)
    (folder / 'script').write_text(SCRIPT)
    return folder


def accept(folder, store, *options, **more):
    return radioctl(folder, 'run', 'board.toml', 'script', '--store', store, *options, **more)


def made_up(serial='A-1', measurements=3, files=None, **more):
    """A calibration that nobody made, as an export has it."""
    run = {
        'run_schema': 1, 'id': str(uuid.uuid4()), 'kind': 'calibration', 'serial': serial, 'board': 'Made up',
        'fingerprint': '0123456789abcdef', 'version': '0.1.0', 'station': 'bench-1', 'operator': None,
        'begun': '2026-03-01T09:30:00Z', 'ended': '2026-03-01T09:31:00Z', 'mode': 'hardware', 'channel': 1,
        'verdict': 'pass', 'exit_code': 0, 'settings': {'method': 'fit'}, 'files': files or {},
        'measurements': [{'name': 'leakage_after', 'unit': 'dBc', 'channel': 1, 'khz': 18000000 + n, 'degrees': 25,
                          'value': -70.25 - n, 'lowest': None, 'highest': -60.0, 'held': True}
                         for n in range(measurements)],
    }
    run.update(more)
    return run


def write_runs(file, *runs):
    file.write_text(''.join(json.dumps(run) + '\n' for run in runs))
    return file


def exported(folder, store):
    """All runs of a store, by their ids."""
    ran = radioctl(folder, 'store', 'export', '--format', 'json', '--store', store)
    assert ran.returncode == 0, ran.stderr
    runs = [json.loads(line) for line in ran.stdout.splitlines()]
    assert len({run['id'] for run in runs}) == len(runs)
    return {run['id']: run for run in runs}


class Server:
    """A cluster of PostgreSQL on a socket of its own folder. PostgreSQL does not run as root: then it is the user
    postgres."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix='radioctl-postgresql-', dir='/tmp'))
        self.bin = sorted(pathlib.Path('/usr/lib/postgresql').glob('*/bin'))[-1]
        self.user = 'postgres' if os.getuid() == 0 else pwd.getpwuid(os.getuid()).pw_name
        self.process = None
        if os.getuid() == 0:
            shutil.chown(self.folder, 'postgres')
        self._run(self.bin / 'initdb', '-D', self.folder / 'data', '-U', self.user, '-A', 'trust', '-E', 'UTF8', '--no-locale')

    def _as_user(self, *command):
        as_user = ['setpriv', '--reuid=postgres', '--regid=postgres', '--clear-groups'] if os.getuid() == 0 else []
        return as_user + [str(word) for word in command]

    def _run(self, *command):
        subprocess.run(self._as_user(*command), check=True, capture_output=True, cwd=self.folder)

    def url(self, database='postgres', user=None):
        return f'postgresql://{user or self.user}@/{database}?host={self.folder}'

    def _launch(self):
        with open(self.folder / 'log', 'ab') as log:
            self.process = subprocess.Popen(  # pylint: disable=consider-using-with
                self._as_user(self.bin / 'postgres', '-D', self.folder / 'data', '-k', self.folder, '-c', 'listen_addresses=',
                              '-c', 'max_connections=40'), stdout=log, stderr=log, cwd=self.folder)

    def start(self):
        self._launch()
        for _ in range(1200):
            if subprocess.run([str(self.bin / 'pg_isready'), '-q', '-h', str(self.folder), '-U', self.user], check=False).returncode == 0:
                return self
            if self.process.poll() is not None:
                self._launch()  # what is left of one that was killed is still there
            time.sleep(0.05)
        raise RuntimeError((self.folder / 'log').read_text())

    def kill(self):
        """As the power goes: the server and all that it started."""
        children = pathlib.Path(f'/proc/{self.process.pid}/task/{self.process.pid}/children').read_text().split()
        self.process.kill()
        for child in children:
            try:
                os.kill(int(child), signal.SIGKILL)
            except ProcessLookupError:
                pass
        self.process.wait()
        self.process = None

    def stop(self):
        if self.process is not None:
            self.process.send_signal(signal.SIGINT)
            self.process.wait()
            self.process = None

    def sql(self, statement, database='postgres', user=None):
        return subprocess.run([str(self.bin / 'psql'), '-X', '-A', '-t', '-v', 'ON_ERROR_STOP=1', '-d', self.url(database, user),
                               '-c', statement], text=True, capture_output=True, check=False)

    def remove(self):
        self.stop()
        shutil.rmtree(self.folder, ignore_errors=True)
