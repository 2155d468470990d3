"""The Debian package, made of this build, installed into a folder and removed from it."""
import json
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

BUILD = Path(os.environ["ORVANTA_BIN"]).parent


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="orvanta-package-")
        cls.addClassCleanup(folder.cleanup)
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder.name)
        cls.package = next(Path(folder.name).glob("*.deb"))

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="orvanta-root-")
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        (self.root / "var/lib/dpkg").mkdir(parents=True)
        (self.root / "etc").mkdir()
        (self.root / "var/lib/dpkg/status").touch()

    def dpkg(self, *arguments):
        run("dpkg", f"--root={self.root}", "--force-script-chrootless", "--force-depends", "--log=/dev/null", *arguments)

    def files(self):
        """What stands there, beside dpkg's own records and what making a user leaves."""
        found = {path.relative_to(self.root).as_posix() for path in self.root.rglob("*") if not path.is_dir()}
        return {name for name in found if not name.startswith(("var/lib/dpkg/", "var/cache/", "etc/"))}

    def test_it_brings_everything_and_takes_everything_away(self):
        self.dpkg("--install", self.package)
        files = self.files()
        for name in ("bin/orvanta-focus", "bin/orvanta-harness", "bin/orvanta-service", "libexec/orvanta-filterd",
                     "share/applications/com.orvanta.Focus.desktop", "share/dbus-1/system.d/com.orvanta.focus.OrvantaFocusDNSProxy.conf",
                     "share/dbus-1/system-services/com.orvanta.focus.OrvantaFocusDNSProxy.service",
                     "share/polkit-1/actions/com.orvanta.focus.filter.policy", "lib/systemd/system/orvanta-filterd.service",
                     "lib/systemd/user/orvanta-harness.service", "lib/sysusers.d/orvanta-filterd.conf"):
            self.assertIn(f"usr/{name}", files)
        self.assertEqual((self.root / "usr/share/orvanta-focus/prefix").read_text(), "/usr\n")
        self.assertIn("orvanta-filter:", (self.root / "etc/passwd").read_text())
        for name in ("lib/systemd/system/orvanta-filterd.service", "share/dbus-1/system-services/com.orvanta.focus.OrvantaFocusDNSProxy.service"):
            self.assertIn("=/usr/libexec/orvanta-filterd\n", (self.root / "usr" / name).read_text())

        state = self.root / "var/lib/orvanta-focus"
        state.mkdir()
        (state / "state").touch()
        self.dpkg("--remove", "orvanta-focus")
        self.assertEqual(self.files(), {"var/lib/orvanta-focus/state"})
        self.dpkg("--purge", "orvanta-focus")
        self.assertEqual(self.files(), set())

    def stand_in(self, name, version, files=(), provides=()):
        """A package of that name, with empty files."""
        content = Path(tempfile.mkdtemp(prefix="content-", dir=self.root))
        (content / "DEBIAN").mkdir()
        (content / "DEBIAN/control").write_text(
            f"Package: {name}\nVersion: {version}\nProvides: {', '.join(provides)}\nArchitecture: all\n"
            "Maintainer: Nobody <nobody@example.org>\nDescription: none\n")
        for file in files:
            (content / file).parent.mkdir(parents=True)
            (content / file).touch()
        package = content.with_suffix(".deb")
        run("dpkg-deb", "--root-owner-group", "--build", content, package)
        return package

    def shell(self, version):
        return self.stand_in("gnome-shell", version, files=["usr/bin/gnome-shell"])

    def meet_needs(self):
        """Has what the package depends on installed, without which dpkg tells it of nothing that comes later."""
        names = [need.split()[0] for need in run("dpkg-deb", "--field", self.package, "Depends").split(", ")]
        self.dpkg("--install", self.stand_in("needs", "1", provides=[f"{name} (= 99:1)" for name in names]))

    def extension(self):
        """The versions of GNOME Shell that the extension where the shell looks for it is for; None if there is none."""
        folder = self.root / "usr/share/gnome-shell/extensions/focus@orvanta.com"
        return json.loads((folder / "metadata.json").read_text())["shell-version"] if (folder / "extension.js").exists() else None

    def test_gnome_shell_finds_the_extension_in_its_own_form(self):
        self.meet_needs()
        self.dpkg("--install", self.package)
        self.assertIsNone(self.extension())
        for version, major in (("43.9-0+deb12u2", "43"), ("48.4-1~deb13u1", "48"), ("44.1-1", "44"), ("1:46~beta-1", "46")):
            self.dpkg("--install", self.shell(version))
            self.assertIn(major, self.extension())
            self.dpkg("--install", self.package)
            self.assertIn(major, self.extension())
        self.dpkg("--install", self.shell("42.9-1"))
        self.assertIsNone(self.extension())
        self.dpkg("--install", self.shell("43.9-1"))
        self.dpkg("--remove", "gnome-shell")
        self.assertIsNone(self.extension())
        self.dpkg("--install", self.shell("43.9-1"))
        self.dpkg("--remove", "orvanta-focus")
        self.assertFalse((self.root / "usr/share/gnome-shell").exists())

    def test_the_machine_that_packs_it_does_not_choose_the_extensions_form(self):
        content = run("dpkg-deb", "--contents", self.package)
        self.assertIn("/usr/share/orvanta-focus/gnome-extension/43/extension.js", content)
        self.assertIn("/usr/share/orvanta-focus/gnome-extension/45/extension.js", content)
        self.assertNotIn("/usr/share/gnome-shell", content)

    def test_an_installed_copy_brings_the_form_of_the_shell_that_is_there(self):
        run("cmake", "--install", BUILD, "--prefix", self.root / "usr")
        major = run("gnome-shell", "--version").split()[-1].partition(".")[0]
        self.assertIn(major, self.extension())

    def test_an_upgrade_keeps_what_is_stored(self):
        self.dpkg("--install", self.package)
        state = self.root / "var/lib/orvanta-focus/state"
        state.parent.mkdir()
        state.write_text("kept")
        self.dpkg("--install", self.package)
        self.assertEqual(state.read_text(), "kept")

    def test_it_names_what_it_needs(self):
        needed = run("dpkg-deb", "--field", self.package, "Depends")
        for name in ("libqt6quick6", "libnftables1", "libnetfilter-queue1", "libsystemd0", "qml6-module-qtquick", "polkitd"):
            self.assertIn(name, needed)


if __name__ == "__main__":
    unittest.main(verbosity=2)
