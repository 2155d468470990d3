#!/usr/bin/env python3
"""The bundle's property lists, and the order in which packaging/macos/package does its work.

Apple's tools are played by stand-ins that record how they are called: nothing is signed here.
"""
import os
import plistlib
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
PACKAGING = ROOT / "packaging" / "macos"
IDENTIFIER = "com.orvanta.focus"
EXTENSION = "com.orvanta.focus.OrvantaFocusDNSProxy"


def filled(name, **values):
    text = (PACKAGING / name).read_text(encoding="utf-8")
    for key, value in values.items():
        text = text.replace(f"${{{key}}}", value).replace(f"@{key}@", value)
    return plistlib.loads(text.encode())


class PropertyLists(unittest.TestCase):
    def test_what_the_bundle_says_of_itself(self):
        information = filled(
            "Info.plist.in", MACOSX_BUNDLE_EXECUTABLE_NAME="orvanta-focus", PROJECT_VERSION="0.1.0", CMAKE_OSX_DEPLOYMENT_TARGET="14.0")
        self.assertEqual(information["CFBundleIdentifier"], IDENTIFIER)
        self.assertTrue(EXTENSION.startswith(information["CFBundleIdentifier"] + "."))
        self.assertEqual(information["CFBundleExecutable"], "orvanta-focus")
        self.assertEqual(information["LSMinimumSystemVersion"], "14.0")
        self.assertIs(information["NSHighResolutionCapable"], True)
        for asked in ("NSAppleEventsUsageDescription", "NSFocusStatusUsageDescription"):
            self.assertGreater(len(information[asked]), 30)
        self.assertNotIn("LSUIElement", information)
        self.assertNotRegex(str(information), r"[$@]\{?[A-Z_]+")

    def test_every_language_of_the_program_is_one_of_the_bundle(self):
        languages = {re.search(r"_(\w+)\.ts", file.name)[1] for file in (ROOT / "i18n").glob("*.ts")} - {"en"}
        names = {"zh_CN": "zh-Hans"}
        information = filled("Info.plist.in")
        self.assertEqual(set(information["CFBundleLocalizations"]), {"en"} | {names.get(language, language) for language in languages})

    def test_what_the_signature_entitles_to(self):
        self.assertEqual(filled("OrvantaFocus.entitlements.in", ORVANTA_APPLE_TEAM="TEAM"), {
            "com.apple.application-identifier": f"TEAM.{IDENTIFIER}",
            "com.apple.developer.networking.networkextension": ["content-filter-provider-systemextension"],
            "com.apple.developer.system-extension.install": True,
            "com.apple.developer.team-identifier": "TEAM",
            "com.apple.developer.ubiquity-kvstore-identifier": f"TEAM.{IDENTIFIER}",
            "com.apple.security.automation.apple-events": True,
        })


class Package(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.log = self.folder / "log"
        tools = self.folder / "tools"
        tools.mkdir()
        for tool in ("codesign", "xcrun", "ditto", "macdeployqt"):
            (tools / tool).write_text(f'#!/bin/sh\necho "{tool} $*" >>"$LOG"\n')
            (tools / tool).chmod(0o755)
        # It brings Qt.
        with (tools / "macdeployqt").open("a") as script:
            script.write('mkdir -p "$1/Contents/Frameworks/QtCore.framework" "$1/Contents/PlugIns/platforms"\n'
                         'touch "$1/Contents/PlugIns/platforms/libqcocoa.dylib"\n')
        self.environment = os.environ | {"PATH": f"{tools}:{os.environ['PATH']}", "LOG": str(self.log)}

        self.build = self.folder / "build"
        (self.build / "bin" / "orvanta-focus.app" / "Contents" / "MacOS").mkdir(parents=True)
        (self.build / "bin" / "orvanta-focus.app" / "Contents" / "MacOS" / "orvanta-focus").touch()
        (self.build / "bin" / "orvanta-harness").touch()
        self.extension = self.folder / f"{EXTENSION}.systemextension"
        (self.extension / "Contents" / "MacOS").mkdir(parents=True)
        (self.folder / "profile").touch()
        self.output = self.folder / "output"

    def package(self, extension=None):
        return subprocess.run(
            [PACKAGING / "package", self.build, extension or self.extension, self.folder / "profile", "Developer ID", "notary", self.output],
            env=self.environment, capture_output=True, text=True, check=False)

    def test_it_signs_from_the_inside_out_then_notarises_then_staples(self):
        done = self.package()
        self.assertEqual(done.returncode, 0, done.stderr)
        app = f"{self.output}/Orvanta Focus.app"
        calls = [line.replace(app, "APP").replace(str(self.output), "OUT") for line in self.log.read_text().splitlines()]
        signed = "codesign --force --timestamp --options runtime --sign Developer ID"
        self.assertEqual([call for call in calls if not call.startswith("macdeployqt")], [
            f"{signed} APP/Contents/PlugIns/platforms/libqcocoa.dylib",
            f"{signed} APP/Contents/Frameworks/QtCore.framework",
            f"codesign --verify --strict APP/Contents/Library/SystemExtensions/{EXTENSION}.systemextension",
            f"{signed} APP/Contents/MacOS/orvanta-harness",
            f"{signed} --entitlements {self.build}/packaging/macos/OrvantaFocus.entitlements APP",
            "codesign --verify --deep --strict APP",
            "ditto -c -k --keepParent APP OUT/Orvanta Focus.zip",
            "xcrun notarytool submit OUT/Orvanta Focus.zip --keychain-profile notary --wait",
            "xcrun stapler staple APP",
            "ditto -c -k --keepParent APP OUT/Orvanta Focus.zip",
        ])
        contents = self.output / "Orvanta Focus.app" / "Contents"
        self.assertTrue((contents / "Library" / "SystemExtensions" / self.extension.name / "Contents").is_dir())
        self.assertTrue((contents / "embedded.provisionprofile").is_file())

    def test_an_extension_under_another_name_is_refused(self):
        other = self.folder / "other.systemextension"
        other.mkdir()
        done = self.package(other)
        self.assertEqual(done.returncode, 1)
        self.assertIn(f"has to be called {EXTENSION}.systemextension", done.stderr)
        self.assertFalse(self.log.exists())

    def test_a_signature_that_fails_ends_it(self):
        (self.folder / "tools" / "codesign").write_text('#!/bin/sh\necho "codesign $*" >>"$LOG"\nexit 1\n')
        self.assertNotEqual(self.package().returncode, 0)
        self.assertNotIn("notarytool", self.log.read_text())

    def test_without_arguments_it_says_how_it_is_used(self):
        done = subprocess.run([PACKAGING / "package"], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertIn("packaging/macos/package BUILD EXTENSION", done.stderr)


if __name__ == "__main__":
    unittest.main()
