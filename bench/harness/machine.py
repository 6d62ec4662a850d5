"""What a reader must know of the machine, and what the compared programs call themselves."""
import os
import re
import subprocess
import time


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        for line in file:
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    return "unknown"


def kernel():
    return re.match(r"[\d.]+", os.uname().release).group().rstrip(".")


def facts():
    return {
        "processor": processor(),
        "cores": os.cpu_count(),
        "kernel": "Linux " + kernel(),
        "date": time.strftime("%Y-%m-%d"),
    }


def load_average():
    return os.getloadavg()[0]


def package_version(package):
    done = subprocess.run(["dpkg-query", "-W", "-f=${Version}", package],
                          capture_output=True, text=True, check=False)
    return done.stdout.split("-")[0].split("+")[0] or "absent"


def versions():
    return {
        "NATS": "nats-server " + package_version("nats-server") + " (GOMAXPROCS=1)",
        "mosquitto": "mosquitto " + package_version("mosquitto"),
        "SQLite": "SQLite " + package_version("libsqlite3-0") + " (FTS5, trigram)",
        "nginx": "nginx " + package_version("nginx-light"),
        "curl": "curl " + package_version("curl"),
        "wget": "wget " + package_version("wget"),
        "aria2c": "aria2c " + package_version("aria2"),
        "transmission": "transmission-daemon " + package_version("transmission-daemon"),
        "libuv": "libuv " + package_version("libuv1"),
        "Qt": "Qt " + package_version("libqt6widgets6"),
    }
