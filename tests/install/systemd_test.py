#!/usr/bin/python3
"""Installs the systemd units and uses them: systemd-analyze verifies them, and systemd-socket-activate
listens instead of the socket unit and runs the command of the service unit.

usage: systemd_test.py CMAKE BUILD EXAMPLES"""

import configparser
import contextlib
import os
import pathlib
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

REPORTS = [("oru-tlm-tool", "-qsi"), ("oru-serverreport-tool", "-lqocai")]


def unit(path):
    """Returns the settings of a unit file by section."""
    settings = configparser.RawConfigParser(strict=False)
    settings.optionxform = str
    settings.read_string(path.read_text(encoding="utf-8"))
    return settings


class Pair:
    """The socket and service units in use: a listener at `path`, which answers from `snapshot`."""

    def __init__(self, service, path, snapshot):
        name, _ = service["Service"]["Environment"].split("=")
        self.path = path
        command = ["systemd-socket-activate", "--listen", path, "--accept", "--inetd", "--setenv", f"{name}={snapshot}",
                   *service["Service"]["ExecStart"].split()]
        self.listener = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                         stderr=subprocess.DEVNULL)
        while not os.path.exists(path):
            if self.listener.poll() is not None:
                sys.exit("systemd_test: the listener does not start")
            time.sleep(0.01)

    def answering(self):
        """Returns the processes that are writing an answer."""
        pid = self.listener.pid
        return [int(child) for child in pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]

    def stop(self):
        self.listener.terminate()
        self.listener.wait()


def report(bin_dir, tool, switches, source):
    run = subprocess.run([bin_dir / tool, switches], env=dict(os.environ, ORU_SNAPSHOT=str(source)), timeout=120,
                         stdin=subprocess.DEVNULL, capture_output=True)
    return run.stdout, run.stderr, run.returncode


def compare(what, expected, got):
    if expected != got:
        sys.exit(f"systemd_test: {what}: expected {expected!r}, got {got!r}")


def compare_concurrent_clients(bin_dir, pair, example, count):
    """Runs `count` clients at the same time. Each must print the same as from the file."""
    got = [None] * count

    def client(number):
        got[number] = report(bin_dir, *REPORTS[number % len(REPORTS)], pair.path)
    clients = [threading.Thread(target=client, args=(number,)) for number in range(count)]
    for thread in clients:
        thread.start()
    for thread in clients:
        thread.join()
    for number in range(count):
        tool, switches = REPORTS[number % len(REPORTS)]
        compare(f"client {number}", report(bin_dir, tool, switches, example), got[number])


def kill_service_halfway(bin_dir, pair, between):
    """Kills the service after a client, connected through `between`, has read the first part of its answer."""
    listener = socket.socket(socket.AF_UNIX)
    listener.bind(between)
    listener.listen()

    def forward():
        client, _ = listener.accept()
        with client, socket.socket(socket.AF_UNIX) as service:
            service.connect(pair.path)
            client.sendall(service.recv(4096))
            writing = pair.answering()
            compare("processes that write an answer", 1, len(writing))
            os.kill(writing[0], signal.SIGKILL)
            with contextlib.suppress(ConnectionResetError):
                while part := service.recv(65536):
                    client.sendall(part)
    forwarding = threading.Thread(target=forward)
    forwarding.start()
    out, err, status = report(bin_dir, "oru-serverreport-tool", "-l", between)
    forwarding.join()
    listener.close()
    compare("output of a report that was cut short", (b"", 1), (out, status))
    message = f"oru-serverreport-tool: Failed to get all streams: {between}:".encode()
    if not err.startswith(message) or err.count(b"\n") != 1:
        sys.exit(f"systemd_test: killed halfway: {err!r}")


def main():
    cmake, build, examples = sys.argv[1:]
    with contextlib.ExitStack() as cleanup:
        scratch = pathlib.Path(cleanup.enter_context(tempfile.TemporaryDirectory()))
        # $TMPDIR may be too long: the path of a socket has at most 107 bytes.
        sockets = cleanup.enter_context(tempfile.TemporaryDirectory(dir="/tmp"))
        prefix = scratch / "prefix"
        subprocess.run([cmake, "--install", build, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL)
        units = [prefix / "lib/systemd/system" / name for name in (
            "oru-snapshot.socket", "oru-snapshot@.service", "oru-metrics.timer", "oru-metrics.service")]
        verify = subprocess.run(["systemd-analyze", "verify", *units], capture_output=True, text=True,
                                env=dict(os.environ, MANPATH=str(prefix / "share/man")))
        compare("systemd-analyze verify", (0, ""), (verify.returncode, verify.stdout + verify.stderr))
        compare("path", "/run/oru/snapshot.sock", unit(units[0])["Socket"]["ListenStream"])
        service = unit(units[1])
        compare("program", f"{prefix}/bin/oru-snapshot record", service["Service"]["ExecStart"])
        compare("source", "ORU_SNAPSHOT=/run/oru/snapshot.json", service["Service"]["Environment"])
        compare("metrics", f"{prefix}/bin/oru-snapshot metrics -o /var/lib/prometheus/node-exporter/oru.prom",
                unit(units[3])["Service"]["ExecStart"])

        # A limit on the rate would switch the socket off for good, and without one on the number nothing bounds the load.
        listener = unit(units[0])["Socket"]
        compare("limits", ("0", "32"), (listener["TriggerLimitIntervalSec"], listener["MaxConnections"]))
        for each in units[1], units[3]:
            settings = unit(each)["Service"]
            compare(each.name, ("", "yes", "strict", "AF_UNIX"), tuple(settings[name] for name in (
                "CapabilityBoundingSet", "NoNewPrivileges", "ProtectSystem", "RestrictAddressFamilies")))

        bin_dir = prefix / "bin"
        example = pathlib.Path(examples) / "two-input-encoder.json"
        pair = Pair(service, f"{sockets}/snapshot.sock", example)
        cleanup.callback(pair.stop)
        for tool, switches in REPORTS:
            compare(tool, report(bin_dir, tool, switches, example), report(bin_dir, tool, switches, pair.path))
        compare_concurrent_clients(bin_dir, pair, example, 20)

        # The answer is larger than all buffers between service and client.
        long_text = ", ".join(f'{{"id": {number}, "info": {{"text": "{"x" * 500}"}}}}' for number in range(1, 8001))
        large = scratch / "large.json"
        large.write_text(f'{{"stream": {{"all": [{long_text}]}}}}', encoding="utf-8")
        writer = Pair(service, f"{sockets}/large.sock", large)
        cleanup.callback(writer.stop)
        kill_service_halfway(bin_dir, writer, f"{sockets}/between.sock")
    print("systemd_test: the units are valid, 20 clients got the answer, half an answer is rejected")


main()
