"""A screen, a session bus and a home of its own for the programs that a benchmark measures."""

import os
import shutil
import subprocess
import sys
import tempfile


def need(programs):
    missing = [f"{program} (Debian: {package})" for program, package in programs.items() if not shutil.which(program)]
    if missing:
        sys.exit("missing: " + ", ".join(missing))


class Desktop:
    """Use it with `with`; `environment` is for the programs."""

    def __init__(self, display=None, software=False):
        need({"Xvfb": "xvfb", "dbus-daemon": "dbus-daemon"})
        self.display = display
        self.software = software

    def __enter__(self):
        self.home = tempfile.TemporaryDirectory(prefix="velmora-benchmark-")
        command = ["Xvfb"] + ([self.display] if self.display else [])
        command += ["-displayfd", "1", "-screen", "0", "1280x900x24", "-nolisten", "tcp"]
        self.screen = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        number = self.screen.stdout.readline().strip()
        if not number:
            sys.exit("Xvfb did not start")
        self.bus = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--print-address"],
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
            env={**os.environ, **self.places(), "DISPLAY": f":{number}"},
        )
        self.environment = {
            **os.environ,
            **self.places(),
            "DISPLAY": f":{number}",
            "DBUS_SESSION_BUS_ADDRESS": self.bus.stdout.readline().strip(),
            "QT_QPA_PLATFORM": "xcb",
            "GDK_BACKEND": "x11",
        }
        if self.software:
            self.environment["QT_QUICK_BACKEND"] = "software"
        return self

    def places(self):
        places = {"HOME": self.home.name}
        for name in ["CACHE", "CONFIG", "DATA", "STATE"]:
            places[f"XDG_{name}_HOME"] = os.path.join(self.home.name, name.lower())
        places["XDG_RUNTIME_DIR"] = os.path.join(self.home.name, "runtime")
        os.makedirs(places["XDG_RUNTIME_DIR"], mode=0o700, exist_ok=True)
        return places

    def __exit__(self, *_):
        for process in (self.bus, self.screen):
            process.terminate()
            process.wait()
        self.home.cleanup()
