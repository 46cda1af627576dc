"""The laboratory on a real Slurm, which the test starts for itself: an array of eight, one task of which is killed."""
import os
import pathlib
import pwd
import shutil
import signal
import socket
import subprocess
import tempfile
import time

import pytest

from support import RADIOCTL, radioctl, write_laboratory

SHARDS = 8
TRANSMITTERS = 4000
CALIBRATIONS = 2 * TRANSMITTERS  # with both sets of settings
PROGRAMS = ('munged', 'mungekey', 'slurmctld', 'slurmd', 'sbatch', 'squeue', 'scancel', 'sinfo')
PACKAGES = 'munge, slurmctld, slurmd, slurm-client'
SCRIPT = os.path.join(os.environ['RADIO_EXAMPLES'], 'laboratory', 'array.sbatch')

# Writes down each task that begins, with its process, which then is the program.
WRAPPER = '''#!/bin/sh
echo "$SLURM_ARRAY_TASK_ID $$" >> '{folder}/begun'
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
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
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
    """munged, slurmctld and slurmd of the test's own, on the loopback, in a folder whose path a socket's name has room for."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix='radioctl-slurm-', dir='/tmp'))
        self.folder.chmod(0o755)  # munge trusts no folder that others may write to
        self.processes = []
        self.path = os.environ.get('PATH', '') + ':/usr/sbin:/sbin'
        self.environment = {**os.environ, 'PATH': self.path, 'SLURM_CONF': str(self.folder / 'slurm.conf')}
        self.host = socket.gethostname().split('.')[0]
        for name in ('state', 'spool'):
            (self.folder / name).mkdir()
        controller, daemon = free_ports(2)
        version = self.run('slurmctld', '-V').stdout.split()[-1]
        if int(version.split('.')[0]) >= 24:  # older ones need no cgroups, and know no such word
            (self.folder / 'cgroup.conf').write_text('CgroupPlugin=disabled\n')
        (self.folder / 'slurm.conf').write_text(CONFIGURATION.format(
            host=self.host, controller=controller, daemon=daemon, user=pwd.getpwuid(os.getuid()).pw_name, folder=self.folder,
            cpus=len(os.sched_getaffinity(0))))

    def start(self):
        folder = self.folder
        key = self.run('mungekey', '--create', '--keyfile', folder / 'munge.key')
        assert key.returncode == 0, key.stderr
        self._launch('munged', '--foreground', '--force', '--key-file', folder / 'munge.key', '--socket', folder / 'munge.socket',
                     '--pid-file', folder / 'munge.pid', '--log-file', folder / 'munge.log', '--seed-file', folder / 'munge.seed')
        wait_for((folder / 'munge.socket').exists, 60, last=self.logs)
        self._launch('slurmctld', '-D', '-f', folder / 'slurm.conf')
        self._launch('slurmd', '-D', '-N', self.host, '-f', folder / 'slurm.conf')
        wait_for(lambda: 'idle' in self.run('sinfo', '-h', '-o', '%T').stdout, 120, last=self.logs)
        return self

    def _launch(self, program, *words):
        with open(self.folder / f'{program}.out', 'ab') as log:
            self.processes.append(subprocess.Popen(  # pylint: disable=consider-using-with
                [shutil.which(program, path=self.path), *map(str, words)], env=self.environment, stdout=log, stderr=log,
                cwd=self.folder))

    def run(self, *words, **more):
        return subprocess.run([str(word) for word in words], env=self.environment, text=True, capture_output=True, check=False,
                              timeout=60, **more)

    def submit(self, *words, cwd):
        submitted = self.run('sbatch', '--parsable', *words, cwd=cwd)
        assert submitted.returncode == 0, submitted.stderr + self.logs()
        return submitted.stdout.strip()

    def is_over(self, job):
        listed = self.run('squeue', '-h', '-j', job)
        return not listed.stdout.strip() and (listed.returncode == 0 or 'Invalid job id' in listed.stderr)

    def logs(self):
        return '\n'.join(f'== {log.name}\n{log.read_text(errors="replace")[-2000:]}'
                         for log in sorted(self.folder.glob('*.log')) + sorted(self.folder.glob('*.out')))

    def stop(self):
        """Jobs first: what carries them out is no child of slurmd."""
        if len(self.processes) == 3:
            self.run('scancel', '--user', str(os.getuid()))
            for _ in range(100):
                if not self.run('squeue', '-h').stdout.strip():
                    break
                time.sleep(0.2)
        for process in reversed(self.processes):
            process.terminate()
            try:
                process.wait(timeout=20)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


@pytest.fixture(name='slurm')
def running_slurm():
    if missing():
        pytest.skip(f'{", ".join(missing())} missing, of the packages {PACKAGES}')
    slurm = Slurm()
    try:
        yield slurm.start()
    finally:
        slurm.stop()


def begun(folder):
    """For each start of a task its number and its process."""
    file = folder / 'begun'
    return [tuple(map(int, line.split())) for line in file.read_text().splitlines()] if file.exists() else []


def results_of(shard):
    return f'lab.{shard}-of-{SHARDS}.results'


def kill_one_in_its_middle(folder, last):
    """Gives the number of the task that was killed."""

    def killed():
        for shard, process in begun(folder):
            running = folder / (results_of(shard) + '.running')
            try:
                if running.read_text().count('\n') > 1:
                    os.kill(process, signal.SIGKILL)
                    return shard
            except (FileNotFoundError, ProcessLookupError):
                pass  # it has not begun, or has just come to its end: another one will do
        return None

    return wait_for(killed, 60, last=last)


def test_array_of_eight_with_a_task_killed_comes_to_the_bytes_of_one_machine(tmp_path, slurm):
    alone = tmp_path / 'alone'
    alone.mkdir()
    write_laboratory(alone, count=TRANSMITTERS)
    ran = radioctl(alone, 'laboratory', 'lab.toml')
    assert ran.returncode == 0, ran.stderr

    here = tmp_path / 'array'
    here.mkdir()
    write_laboratory(here, count=TRANSMITTERS)
    wrapper = here / 'radioctl'
    wrapper.write_text(WRAPPER.format(folder=here, radioctl=shutil.which(RADIOCTL)))
    wrapper.chmod(0o755)

    job = slurm.submit('--array', f'1-{SHARDS}', '--export', f'ALL,RADIOCTL={wrapper}', SCRIPT, 'lab.toml', cwd=here)
    lost = kill_one_in_its_middle(here, slurm.logs)
    wait_for(lambda: slurm.is_over(job), 120, last=slurm.logs)

    # All but one are there, and a merge says which is not.
    others = [shard for shard in range(1, SHARDS + 1) if shard != lost]
    assert [shard for shard in range(1, SHARDS + 1) if (here / results_of(shard)).exists()] == others
    ran = radioctl(here, 'laboratory', 'merge', *map(results_of, others), '--out', 'lab.results')
    assert ran.returncode == 3
    assert f'of which 1 shard is missing: {lost}' in ran.stderr

    # It is begun once more, and goes on: what it had reported is there as it was.
    kept = [line for line in (here / (results_of(lost) + '.running')).read_text().splitlines(keepends=True)[1:]
            if line.endswith('\n')]
    job = slurm.submit('--array', lost, '--export', f'ALL,RADIOCTL={wrapper},SHARDS={SHARDS}', SCRIPT, 'lab.toml', cwd=here)
    wait_for(lambda: slurm.is_over(job), 120, last=slurm.logs)
    assert sorted(shard for shard, _ in begun(here)) == sorted([*range(1, SHARDS + 1), lost])
    (log,) = here.glob(f'laboratory-{job}-{lost}.log')
    assert f'{CALIBRATIONS // SHARDS - len(kept)} calibrations beside {len(kept)} that were there' in log.read_text()
    assert set(kept) <= set((here / results_of(lost)).read_text().splitlines(keepends=True))

    ran = radioctl(here, 'laboratory', 'merge', *map(results_of, range(1, SHARDS + 1)), '--out', 'lab.results')
    assert ran.returncode == 0, ran.stderr
    assert (here / 'lab.results').read_bytes() == (alone / 'lab.results').read_bytes()
    assert not list(here.glob('*.running'))
