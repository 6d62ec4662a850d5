"""Starting and ending the programs that are measured. Each one is ended by its own process id."""
import json
import os
import resource
import shutil
import signal
import socket
import subprocess
import tempfile
import time
from contextlib import contextmanager

PORTS = iter(range(7400, 8400))


class Failure(Exception):
    pass


class Context:
    def __init__(self, build, quick):
        self.bin = os.path.join(build, "bin")
        self.bench = os.path.join(build, "bench")
        self.quick = quick
        self.rounds = 1 if quick else 7
        self.temporary = tempfile.mkdtemp(prefix="velmora-bench-")
        self.memory = tempfile.mkdtemp(prefix="velmora-bench-", dir="/dev/shm")
        limit = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
        resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))
        self.file_limit = limit

    def close(self):
        shutil.rmtree(self.temporary, ignore_errors=True)
        shutil.rmtree(self.memory, ignore_errors=True)

    def folder(self):
        return tempfile.mkdtemp(dir=self.temporary)

    def program(self, name):
        for place in (self.bench, self.bin):
            path = os.path.join(place, name)
            if os.path.exists(path):
                return path
        raise Failure(f"{name} was not built")

    def load(self, name, *arguments, timeout=120):
        """Runs a load program; its line of JSON. Status 1 means that something was lost."""
        done = subprocess.run([self.program(name), *map(str, arguments)], capture_output=True,
                              text=True, timeout=timeout, check=False)
        if done.returncode != 0:
            raise Failure(f"{name}: {(done.stderr or done.stdout).strip()}")
        return json.loads(done.stdout)


def end(process):
    if process.poll() is None:
        process.send_signal(signal.SIGTERM)
    try:
        process.wait(10)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def wait_for_port(address, port, seconds=10, pause=0.01):
    limit = time.monotonic() + seconds
    while time.monotonic() < limit:
        try:
            socket.create_connection((address, port), 1).close()
            return
        except OSError:
            time.sleep(pause)
    raise Failure(f"nothing listens on {address}:{port}")


@contextmanager
def running(*command, environment=None, line=None, port=None, prefix=()):
    """A program that is ready: it printed a line that begins so, or its port answers."""
    process = subprocess.Popen(
        [*prefix, *map(str, command)], stdout=subprocess.PIPE if line else subprocess.DEVNULL,
        stderr=subprocess.DEVNULL, env={**os.environ, **(environment or {})}, text=True)
    try:
        if line and not process.stdout.readline().startswith(line):
            raise Failure(f"{command[0]} did not start")
        if port:
            wait_for_port("127.0.0.1", port)
        yield process
    finally:
        end(process)
        if process.stdout:
            process.stdout.close()


class Servent:
    """A servent and its control socket."""

    def __init__(self, process, profile, address):
        self.process, self.profile, self.address = process, profile, address
        self.message_port, self.upload_port = 6346, 6345
        self.control = socket.socket(socket.AF_UNIX)
        self.control.connect(os.path.join(profile, "control.sock"))
        self.lines = self.control.makefile("r", encoding="utf-8")
        self.number = 0

    @property
    def messages(self):
        return f"{self.address}:{self.message_port}"

    @property
    def uploads(self):
        return f"{self.address}:{self.upload_port}"

    def ask(self, method, **parameters):
        self.number += 1
        call = {"jsonrpc": "2.0", "id": self.number, "method": method, "params": parameters}
        self.control.sendall((json.dumps(call) + "\n").encode())
        while True:
            answer = json.loads(self.lines.readline())
            if answer.get("id") == self.number:
                break
        if "error" in answer:
            raise Failure(f"{method} {parameters}: {answer['error']['message']}")
        return answer["result"]

    def get(self, control):
        return self.ask("get", control=control)["value"]

    def rows(self, control):
        return self.ask("rows", control=control)["rows"]

    def wait(self, what, condition, seconds=10):
        limit = time.monotonic() + seconds
        while time.monotonic() < limit:
            if condition():
                return
            time.sleep(0.02)
        raise Failure(f"waited in vain for {what}")


@contextmanager
def servent(context, address="127.0.7.1", program="velmorad", profile=None, prefix=(), **fields):
    profile = profile or context.folder()
    fields = {"max_in_host": 20000, "max_in_upload": 1000, "ttlMax_config": 7, **fields}
    settings = [f"--set={name}={value}" for name, value in fields.items()]
    with running(context.program(program), "--profile", profile, "--listen", address, *settings,
                 line="velmorad" if program == "velmorad" else program, prefix=prefix) as process:
        one = Servent(process, profile, address)
        try:
            yield one
        finally:
            one.lines.close()
            one.control.close()


@contextmanager
def bare_relay(context):
    port = next(PORTS)
    with running(context.program("bare_relay"), "127.0.0.1", port, line="bare_relay") as process:
        yield process, f"127.0.0.1:{port}"


@contextmanager
def nats(context):
    port = next(PORTS)
    path = os.path.join(context.folder(), "nats.conf")
    with open(path, "w", encoding="utf-8") as file:
        file.write(f'listen: "127.0.0.1:{port}"\nping_interval: "1h"\nmax_pending: 256MB\n')
    with running("nats-server", "-c", path, environment={"GOMAXPROCS": "1"}, port=port) as process:
        yield process, f"127.0.0.1:{port}"


@contextmanager
def mosquitto(context):
    port = next(PORTS)
    path = os.path.join(context.folder(), "mosquitto.conf")
    with open(path, "w", encoding="utf-8") as file:
        file.write(f"listener {port} 127.0.0.1\nallow_anonymous true\npersistence false\n"
                   "log_dest none\nuser root\nmax_queued_messages 0\nset_tcp_nodelay true\n")
    with running("mosquitto", "-c", path, port=port) as process:
        yield process, f"127.0.0.1:{port}"


@contextmanager
def nginx(context, root):
    port = next(PORTS)
    folder = context.folder()
    path = os.path.join(folder, "nginx.conf")
    temporary = "".join(f"{kind}_temp_path {folder}/{kind}; " for kind in
                        ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
    user = "user root; " if os.getuid() == 0 else ""
    with open(path, "w", encoding="utf-8") as file:
        file.write(f"daemon off; master_process off; {user}pid {folder}/pid; error_log /dev/null;\n"
                   "events {}\n"
                   f"http {{ access_log off; sendfile off; output_buffers 2 512k; {temporary}\n"
                   f"  server {{ listen 127.0.0.1:{port}; root {root}; }} }}\n")
    with running("nginx", "-c", path, "-p", folder, port=port) as process:
        yield process, port


def _perf(frequency, *target, name=None):
    """The functions that took the time, most first; None where perf cannot look."""
    with tempfile.NamedTemporaryFile(prefix="velmora-perf-") as data:
        recorded = subprocess.run(
            ["perf", "record", "-q", "-e", "cpu-clock", "-F", str(frequency), "-o", data.name,
             *map(str, target)], capture_output=True, check=False)
        if recorded.returncode != 0:
            return None
        shown = subprocess.run(
            ["perf", "report", "-i", data.name, "--stdio", "--no-children", "--percent-limit",
             "1.5", "-F", "overhead,symbol", *(["--comm", name] if name else [])],
            capture_output=True, text=True, check=False).stdout
    lines = [line.strip()[:100] for line in shown.splitlines()
             if line.strip() and not line.startswith("#")]
    return "\n".join(lines[:20])


def profile_of(process, seconds=2):
    return _perf(1999, "-p", process.pid, "--", "sleep", seconds)


def profile_command(name, *command):
    """Of the processes of that name that the command starts."""
    return _perf(9999, "--", *command, name=name)


@contextmanager
def beside(context, load, *arguments):
    """A load that runs meanwhile; it ends by itself."""
    process = subprocess.Popen([context.program(load), *map(str, arguments)],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        yield
    finally:
        process.wait(60)
