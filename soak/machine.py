"""A desktop of its own: folders, a display with a window manager, a session bus and a sound server."""

import math
import os
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

from .processes import Processes

HOME_SIZE = "64m"
SMALL_BANK = "/usr/share/sounds/sf2/TimGM6mb.sf2"  # Whatever else is installed, which may take long to load.
SOUND_NEWS = 2  # Seconds.
ACCESSIBILITY_BUS = Path("/usr/share/dbus-1/services/org.a11y.Bus.service")
BUS = """<busconfig><type>session</type><listen>unix:path={socket}</listen><servicedir>{services}</servicedir>
<policy context="default"><allow send_destination="*"/><allow eavesdrop="true"/><allow own="*"/></policy></busconfig>
"""
# A mail program and a browser that take what they are given, and send and show nothing.
MAIL_PROGRAM = '#!/bin/sh\nprintf "%s\\0" "$@" >"$HOME/../mail.part" && mv "$HOME/../mail.part" "$HOME/../mail"\n'
# The consent to the log is given already; builds without the log take no notice.
SETTINGS = "[General]\nTambrelBetaLogConsentAsked=true\nTambrelBetaLogFileEnabled=true\n"


SUPPRESSIONS = Path(__file__).parent
SANITIZERS = {
    # Otherwise the leak check guesses where thread-local variables of libraries opened late lie, and may crash.
    "ASAN_OPTIONS": "intercept_tls_get_addr=0",
    "LSAN_OPTIONS": f"suppressions={SUPPRESSIONS}/lsan.supp:print_suppressions=0",
    "TSAN_OPTIONS": f"ignore_noninstrumented_modules=1:suppressions={SUPPRESSIONS}/tsan.supp",
    "UBSAN_OPTIONS": "print_stacktrace=1",
}


class Machine:
    def __init__(self, patience):
        self.patience = patience
        self.processes = Processes()
        self.folder = Path(tempfile.mkdtemp(prefix="tambrel-soak-"))
        self.logs = self.sub_folder("logs")
        self.run = self.sub_folder("run")
        self.home = self.sub_folder("home")
        self.home_is_small = self.mount_home()
        self.mail = self.folder / "mail"
        self.bus = self.sound = None
        self.sound_came = math.inf  # When the sound server was last there again.
        self.environment = self.make_environment()
        self.make_desktop_programs()
        self.write_settings()

    def sub_folder(self, name):
        folder = self.folder / name
        folder.mkdir(mode=0o700)
        return folder

    def make_environment(self):
        kept = {name: value for name, value in os.environ.items()
                if name in ("PATH", "LD_LIBRARY_PATH") or name.endswith("SAN_OPTIONS")}
        return SANITIZERS | kept | {
            "PATH": f"{self.folder}/bin:{kept['PATH']}",
            "LC_ALL": "C.UTF-8",
            "HOME": str(self.home),
            "XDG_RUNTIME_DIR": str(self.run),
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.run}/bus",
            "PULSE_RUNTIME_PATH": str(self.run),
            "PULSE_SERVER": f"unix:{self.run}/pulse",
            "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "TAMBREL_SOUNDFONT": SMALL_BANK,
        }

    def make_desktop_programs(self):
        folder = self.sub_folder("bin")
        for name in ("xdg-email", "xdg-open"):
            program = folder / name
            program.write_text(MAIL_PROGRAM)
            program.chmod(0o755)

    def write_settings(self):
        folder = self.home / ".config/Kestrune Software"
        folder.mkdir(parents=True)
        (folder / "Tambrel.conf").write_text(SETTINGS)

    # A small file system for the home folder, with the settings and the log, can be full or read-only.

    def mount_home(self):
        """Needs root and a mount namespace of our own, with which it also goes away."""
        if "TAMBREL_SOAK_HAS_MOUNTS" not in os.environ:
            return False
        return self.mount("-t", "tmpfs", "-o", f"size={HOME_SIZE},mode=0700", "home", self.home)

    @staticmethod
    def mount(*arguments):
        return subprocess.run(["mount", *map(str, arguments)], stderr=subprocess.DEVNULL).returncode == 0

    def make_home_read_only(self):
        """False when it cannot be done, as for root without mounts."""
        if self.home_is_small:
            # One more mount of it: the one below may have files that are open for writing.
            return self.mount("--bind", self.home, self.home) and self.mount("-o", "remount,bind,ro", self.home)
        if os.geteuid() == 0:
            return False
        self.set_mode_of_home(0o500)
        return True

    def make_home_writable(self):
        if self.home_is_small:
            subprocess.run(["umount", "--lazy", str(self.home)], check=True)
        else:
            self.set_mode_of_home(0o700)

    def set_mode_of_home(self, mode):
        for folder in [self.home, *self.home.rglob("*/")]:
            folder.chmod(mode)

    def fill_home(self):
        """False when there is no small file system to fill."""
        if not self.home_is_small:
            return False
        with open(self.home / "filler", "wb", buffering=0) as file:
            try:
                while file.write(bytes(1 << 16)):
                    pass
            except OSError:
                pass
        return True

    def free_home(self):
        (self.home / "filler").unlink(missing_ok=True)

    # Servers

    def start(self):
        self.start_display()
        self.start_bus()
        self.start_sound()

    def start_display(self):
        read_end, write_end = os.pipe()
        self.processes.start(
            ["Xvfb", "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-displayfd", str(write_end)],
            self.logs / "display.txt", self.environment, pass_fds=[write_end])
        os.close(write_end)
        with os.fdopen(read_end) as display:
            number = display.readline().strip()
        if not number:
            raise RuntimeError(f"The virtual display did not start, see {self.logs}/display.txt")
        self.environment["DISPLAY"] = f":{number}"
        self.processes.start(["openbox"], self.logs / "windowmanager.txt", self.environment)

    def start_bus(self):
        services = self.folder / "services"
        services.mkdir(exist_ok=True)
        if ACCESSIBILITY_BUS.exists():
            shutil.copy(ACCESSIBILITY_BUS, services)
        configuration = self.folder / "bus.conf"
        configuration.write_text(BUS.format(socket=f"{self.run}/bus", services=services))
        (self.run / "bus").unlink(missing_ok=True)
        self.bus = self.processes.start(["dbus-daemon", f"--config-file={configuration}", "--nofork"],
                                        self.logs / "bus.txt", self.environment)
        self.patience.until((self.run / "bus").exists, 10, "the session bus starts")

    def end_bus(self):
        self.processes.end(self.bus)

    def start_sound(self):
        (self.run / "pulse").unlink(missing_ok=True)
        (self.run / "pid").unlink(missing_ok=True)
        self.sound = self.processes.start(
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
             "-L", f"module-native-protocol-unix socket={self.run}/pulse auth-anonymous=1",
             "-L", "module-null-sink sink_name=soak rate=48000 channels=2"],
            self.logs / "sound.txt", self.environment)
        self.patience.until(self.sound_answers, 15, "the sound server starts")
        self.sound_came = time.monotonic()

    def sound_answers(self):
        return subprocess.run(["pactl", "info"], env=self.environment, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=10).returncode == 0

    def end_sound(self, number):
        self.sound_came = math.inf
        self.processes.end(self.sound, number)

    def sound_is_missing(self):
        """Also a moment later, when the news of an attempt before are still on their way."""
        return time.monotonic() < self.sound_came + SOUND_NEWS * self.patience.slow

    def close(self, keep):
        self.processes.end_all()
        if self.home_is_small:
            if keep:
                shutil.copytree(self.home, self.folder / "home.kept", ignore=shutil.ignore_patterns("filler"))
            subprocess.run(["umount", "--lazy", str(self.home)])
            if keep:
                self.home.rmdir()
                (self.folder / "home.kept").rename(self.home)
        if not keep:
            shutil.rmtree(self.folder, ignore_errors=True)
