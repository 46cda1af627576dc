"""The laboratory on a real Slurm, which the test starts for itself: an array of eight, one task of which is killed."""
import os
import pathlib
import shutil
import socket
import subprocess
import time

import pytest

from support import RADIOCTL, radioctl, write_laboratory

SHARDS = 8
PROGRAMS = ('munged', 'mungekey', 'slurmctld', 'slurmd', 'sbatch', 'squeue', 'scancel', 'sinfo')
PACKAGES = 'munge, slurmctld, slurmd, slurm-client'
SCRIPT = os.path.join(os.environ['RADIO_EXAMPLES'], 'laboratory', 'array.sbatch')

# Each task waits where it is told to until it may go on: so one can be killed in its middle, whatever the machine does.
WRAPPER = '''#!/bin/sh
echo "$SLURM_ARRAY_TASK_ID $$ ${SLURM_RESTART_COUNT:-0}" >> '{folder}/begun'
exec '{radioctl}' "$@"
'''

CONFIGURATION = '''ClusterName=laboratory
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={controller}
SlurmdPort={daemon}
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
AuthInfo=socket={folder}/munge.socket
CredType=cred/munge
CryptoType=crypto/munge
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerType=sched/backfill
SchedulerParameters=sched_interval=1,batch_sched_delay=1
ReturnToService=2
KillWait=2
MailProg=/bin/true
NodeName={host} NodeAddr=127.0.0.1 CPUs={cpus} RealMemory=1 State=UNKNOWN
PartitionName=line Nodes={host} Default=YES MaxTime=INFINITE State=UP OverSubscribe=FORCE:4
'''


def missing():
    path = os.environ.get('PATH', '') + ':/usr/sbin:/sbin'
    return [program for program in PROGRAMS if shutil.which(program, path=path) is None]


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(('127.0.0.1', 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def wait_for(what, seconds, *, last=lambda: ''):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        found = what()
        if found:
            return found
        time.sleep(0.2)
    raise AssertionError(f'{seconds} s were not enough\n{last()}')


class Slurm:
    """munged, slurmctld and slurmd of the test's own, on the loopback."""

    def __init__(self, folder):
        self.folder = folder
        self.processes = []
        self.path = os.environ.get('PATH', '') + ':/usr/sbin:/sbin'
        self.environment = {**os.environ, 'PATH': self.path, 'SLURM_CONF': str(folder / 'slurm.conf')}
        for name in ('state', 'spool'):
            (folder / name).mkdir()
        user = subprocess.run(['id', '-un'], text=True, capture_output=True, check=True).stdout.strip()
        controller, daemon = free_ports(2)
        (folder / 'slurm.conf').write_text(CONFIGURATION.format(
            host=socket.gethostname().split('.')[0], controller=controller, daemon=daemon, user=user, folder=folder,
            cpus=len(os.sched_getaffinity(0))))

    def start(self):
        folder = self.folder
        folder.chmod(0o700 if os.getuid() else 0o755)
        self._run('mungekey', '--create', '--keyfile', folder / 'munge.key')
        self._launch('munged', '--foreground', '--force', '--key-file', folder / 'munge.key', '--socket', folder / 'munge.socket',
                     '--pid-file', folder / 'munge.pid', '--log-file', folder / 'munge.log', '--seed-file', folder / 'munge.seed')
        wait_for((folder / 'munge.socket').exists, 20, last=self.logs)
        self._launch('slurmctld', '-D', '-f', folder / 'slurm.conf')
        host = socket.gethostname().split('.')[0]
        self._launch('slurmd', '-D', '-N', host, '-f', folder / 'slurm.conf')
        wait_for(lambda: 'idle' in self.run('sinfo', '-h', '-o', '%T').stdout, 60, last=self.logs)
        return self

    def _run(self, *words):
        return subprocess.run([str(word) for word in words], env=self.environment, check=True, capture_output=True)

    def _launch(self, program, *words):
        with open(self.folder / f'{program}.out', 'ab') as log:
            self.processes.append(subprocess.Popen(  # pylint: disable=consider-using-with
                [shutil.which(program, path=self.path), *map(str, words)], env=self.environment, stdout=log, stderr=log,
                cwd=self.folder))

    def run(self, *words, **more):
        return subprocess.run([str(word) for word in words], env={**self.environment, **more.pop('more', {})}, text=True,
                              capture_output=True, check=False, timeout=60, **more)

    def logs(self):
        return '\n'.join(f'== {log.name}\n{log.read_text(errors="replace")[-2000:]}'
                         for log in sorted(self.folder.glob('*.log')) + sorted(self.folder.glob('*.out')))

    def stop(self):
        self.run('scancel', '--full', '--state=RUNNING', '--user', str(os.getuid()))
        for process in reversed(self.processes):
            process.terminate()
            try:
                process.wait(timeout=20)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()


@pytest.fixture(name='slurm')
def running_slurm(tmp_path):
    if missing():
        pytest.skip(f'{", ".join(missing())} missing, of the packages {PACKAGES}')
    folder = tmp_path / 'slurm'
    folder.mkdir()
    slurm = Slurm(folder)
    try:
        yield slurm.start()
    finally:
        slurm.stop()


def begun(folder):
    """For each start of a task its number, its process and how often it was begun before."""
    file = folder / 'begun'
    return [tuple(map(int, line.split())) for line in file.read_text().splitlines()] if file.exists() else []


def test_array_of_eight_with_a_task_killed_comes_to_the_bytes_of_one_machine(tmp_path, slurm):
    alone = tmp_path / 'alone'
    alone.mkdir()
    write_laboratory(alone, count=64)
    ran = radioctl(alone, 'laboratory', 'lab.toml')
    assert ran.returncode == 0, ran.stderr

    here = tmp_path / 'array'
    here.mkdir()
    write_laboratory(here, count=64)
    wrapper = here / 'radioctl'
    wrapper.write_text(WRAPPER.format(folder=here, radioctl=os.path.abspath(RADIOCTL)))
    wrapper.chmod(0o755)
    options = ['--array', f'1-{SHARDS}', '--export', f'ALL,RADIOCTL={wrapper}']

    submitted = slurm.run('sbatch', '--parsable', *options, SCRIPT, 'lab.toml', cwd=here)
    assert submitted.returncode == 0, submitted.stderr + slurm.logs()
    job = submitted.stdout.strip()

    def calibrating():
        """A task that is in the middle of its shard."""
        for number, process, _ in begun(here):
            running = here / f'lab.{number}-of-{SHARDS}.results.running'
            if running.exists() and running.read_text().count('\n') > 1:
                return number, process, running.read_text()
        return None

    number, process, kept = wait_for(calibrating, 60, last=slurm.logs)
    os.kill(process, 9)
    wait_for(lambda: not slurm.run('squeue', '-h', '-j', job).stdout.strip(), 120, last=slurm.logs)
    lost = here / f'lab.{number}-of-{SHARDS}.results'
    if not lost.exists():
        merging = radioctl(here, 'laboratory', 'merge', *(shard.name for shard in sorted(here.glob('lab.*-of-8.results'))))
        assert merging.returncode == 3
        assert f'of which 1 shard is missing: {number}' in merging.stderr
        again = slurm.run('sbatch', '--parsable', '--array', str(number), '--export', f'ALL,RADIOCTL={wrapper},SHARDS={SHARDS}',
                          SCRIPT, 'lab.toml', cwd=here)
        assert again.returncode == 0, again.stderr
        wait_for(lost.exists, 60, last=slurm.logs)
    assert [one for one, _, _ in begun(here)].count(number) == 2
    # What it had reported before it was killed was not calibrated once more: its lines are there as they were.
    assert set(kept.splitlines()[1:-1]) <= set(lost.read_text().splitlines())

    shards = [f'lab.{shard}-of-{SHARDS}.results' for shard in range(1, SHARDS + 1)]
    merged = radioctl(here, 'laboratory', 'merge', *shards, '--out', 'lab.results')
    assert merged.returncode == 0, merged.stderr
    assert (here / 'lab.results').read_bytes() == (alone / 'lab.results').read_bytes()
    assert not list(pathlib.Path(here).glob('*.running'))
