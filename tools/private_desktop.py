"""A desktop of a script's own, with Zelvane Desk and a provider on this machine.

For the demonstration and the measurements. Nothing of the user's own session or settings is touched.
"""

import json
import os
import shutil
import signal
import subprocess
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
STARTER = ROOT / "Zelvane/Resources/starter-dictionary"
LIMIT = 20  # seconds that anything may take to come up or to happen
SCREEN = "1280x800"
TOOLS = ("Xvfb", "openbox", "dbus-daemon", "xdotool", "xclip", "import", "picom")


class Failure(Exception):
    """A step that did not do what it should."""


def wait_for(what, condition):
    """The first true value of `condition`, within the limit."""
    deadline = time.monotonic() + LIMIT
    while time.monotonic() < deadline:
        value = condition()
        if value:
            return value
        time.sleep(0.02)
    raise Failure(f"{what} did not happen within {LIMIT} s")


class Desktop:
    """A desktop of its own; everything started in it ends with it."""

    def __init__(self, folder):
        self.folder = folder
        self.processes = []
        self.environment = {
            name: value for name, value in os.environ.items()
            if name in ("PATH", "LANG", "LC_ALL", "USER", "LOGNAME")
        }
        self.environment.setdefault("LC_ALL", "C.UTF-8")
        home = folder / "home"
        runtime = folder / "run"
        home.mkdir()
        runtime.mkdir(mode=0o700)
        self.environment.update(HOME=str(home), XDG_RUNTIME_DIR=str(runtime), NO_AT_BRIDGE="0",
                                XDG_CONFIG_HOME=str(home / ".config"), XDG_DATA_HOME=str(home / ".local/share"))

    def start(self, *command, **options):
        environment = {**self.environment, **options.pop("environment", {})}
        options.setdefault("stdout", subprocess.DEVNULL)
        options.setdefault("stderr", subprocess.DEVNULL)
        process = subprocess.Popen(command, env=environment, start_new_session=True, **options)
        self.processes.append(process)
        return process

    def run(self, *command, check=True, **options):
        return subprocess.run(command, env=self.environment, check=check, timeout=LIMIT,
                              capture_output=True, **options).stdout.decode(errors="replace")

    def start_server(self):
        reader, writer = os.pipe()
        nested = shutil.which("Xephyr") if os.environ.get("DISPLAY") else None
        if nested:
            outer = {"DISPLAY": os.environ["DISPLAY"]}
            if "XAUTHORITY" in os.environ:
                outer["XAUTHORITY"] = os.environ["XAUTHORITY"]
            self.start("Xephyr", "-displayfd", str(writer), "-screen", SCREEN, "-title",
                       "Zelvane Desk: demonstration", pass_fds=(writer,), environment=outer)
        else:
            self.start("Xvfb", "-displayfd", str(writer), "-screen", "0", SCREEN + "x24", "-nolisten",
                       "tcp", pass_fds=(writer,))
        os.close(writer)
        with os.fdopen(reader) as number:
            display = number.readline().strip()
        if not display:
            raise Failure("the X server did not start")
        self.environment["DISPLAY"] = ":" + display
        return bool(nested)

    def start_window_manager(self):
        """With a compositor, as desktops have one."""
        self.start("openbox")
        # Windows that draw a shadow of their own say so by this property.
        self.start("picom", "--backend", "xrender", "--config", "/dev/null", "--shadow",
                   "--shadow-exclude", "_GTK_FRAME_EXTENTS@:c")

    def start_bus(self):
        bus = self.start("dbus-daemon", "--session", "--nofork", "--print-address",
                         stdout=subprocess.PIPE)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()
        launcher = next((path for path in ("/usr/libexec/at-spi-bus-launcher",
                                           "/usr/lib/at-spi2-core/at-spi-bus-launcher")
                         if os.path.exists(path)), None)
        if launcher:
            self.start(launcher, "--launch-immediately")

    def window(self, title):
        def find():
            found = self.run("xdotool", "search", "--onlyvisible", "--name", title, check=False)
            return found.split()
        return wait_for(f"the window {title!r}", find)[-1]

    def focus(self, window):
        self.run("xdotool", "windowactivate", "--sync", window)
        time.sleep(0.3)

    def place(self, window, x, y, width, height):
        self.run("xdotool", "windowmove", window, str(x), str(y), "windowsize", window, str(width),
                 str(height))

    def key(self, *names):
        self.run("xdotool", "key", "--clearmodifiers", *names)

    def clipboard(self):
        return self.run("xclip", "-selection", "clipboard", "-o", check=False)

    def set_clipboard(self, text):
        # xclip goes on in the background to serve what it was given.
        self.start("xclip", "-selection", "clipboard", stdin=subprocess.PIPE).communicate(
            text.encode(), timeout=LIMIT)
        wait_for("the clipboard", lambda: self.clipboard() == text)

    def screenshot(self, path):
        self.run("import", "-window", "root", str(path))

    def end(self):
        for process in reversed(self.processes):
            for number in (signal.SIGTERM, signal.SIGKILL):
                if process.poll() is not None:
                    break
                try:
                    os.killpg(process.pid, number)
                    process.wait(2)
                except (ProcessLookupError, subprocess.TimeoutExpired):
                    continue


class Zelvane:
    """The program with a profile and a provider of its own, on a desktop."""

    def __init__(self, program, desktop):
        self.program = program
        self.desktop = desktop
        self.profile = desktop.folder / "profile"
        self.log = desktop.folder / "zelvane.log"
        self.requests = desktop.folder / "requests.jsonl"

    def command(self, *arguments):
        return self.desktop.run(self.program, "--profile", str(self.profile), *arguments)

    def start_provider(self, answers, delay_ms):
        """A provider that knows the translations in `answers`; any other text gets an error."""
        known = self.desktop.folder / "answers.json"
        known.write_text(json.dumps(answers))
        provider = Path(self.program).parent / "zelvane_fake_provider"
        process = self.desktop.start(str(provider), "--port", "0", "--map", str(known), "--delay-ms",
                                     str(delay_ms), "--log", str(self.requests),
                                     stdout=subprocess.PIPE)
        words = process.stdout.readline().decode().split()
        if len(words) != 2:
            raise Failure("the provider on this machine did not start")
        self.choose_engine("Mistral")
        self.command("defaults", "write", "zv.endpoint.Mistral", f"http://127.0.0.1:{words[1]}")

    def choose_engine(self, name):
        self.command("defaults", "write", "zv.provider", name)
        # What the program asks the hosted service at its start stays on this machine.
        self.command("defaults", "write", "zv.endpoint.Zelvane", "http://127.0.0.1:9")

    def install_starter_dictionaries(self):
        """As ordinary dictionaries of this profile, both ways between English and three languages."""
        folder = self.profile / "data/org.zelvane.desk/glossaries/wikdict-2_2026-06"
        folder.mkdir(parents=True)
        for file in STARTER.glob("*.tsv"):
            shutil.copy(file, folder)
        packages = [{"sourceCode": code, "targetCode": "en-US"} for code in ("fr", "de", "es")]
        self.command("defaults", "write", "zv.glossaryPackages.wikdict-2_2026-06", "--data",
                     json.dumps(packages))

    def write_pairs(self, key_code_by_target):
        """One pair for each target language, from any language, with Control, Alt and a key."""
        pairs = [{"id": f"00000000-0000-4000-8000-{key_code:012d}", "enabled": True,
                  "source": "Any Language", "target": target,
                  "hotKey": {"keyCode": key_code, "carbonModifiers": 0x1800}}
                 for target, key_code in key_code_by_target.items()]
        self.command("defaults", "write", "zv.pairs", "--data", json.dumps(pairs))

    def write_bool(self, key, value):
        self.command("defaults", "write", key, "--bool", "true" if value else "false")

    def start(self, *options, key="demonstration"):
        self.write_bool("zv.hasSeenOnboarding", True)
        environment = {"ZELVANE_API_KEY": key} if key else {}
        with self.log.open("w") as log:
            process = self.desktop.start(self.program, "--profile", str(self.profile), "--report",
                                         *options, stdout=log, stderr=subprocess.STDOUT, environment=environment)
        wait_for("the start of Zelvane Desk", lambda: "ready\n" in self.printed())
        return process

    def quit(self, process):
        process.terminate()
        process.wait(LIMIT)

    def printed(self):
        return self.log.read_text() if self.log.exists() else ""

    def report_after(self, length):
        """The timing report that comes behind the first `length` characters printed."""
        def find():
            printed = self.printed()
            return "verdict:" in printed[length:] and printed.endswith("\n") and printed[length:].strip()
        return wait_for("the end of the translation", find)
