"""The blocked lists: shared with other machines through the synced folder, kept in the settings, and never lost."""
import errno
import itertools
import json
import os
import random
import unittest
from pathlib import Path

from support import accessible, x11
from support.programs import Application, encoded_lists, scratch
from support.scene import CALCULATOR, EDITOR, XTERM, Scene
from support.waiting import happens, stays, until


def in_own_mounts(command):
    """A prefix that runs the program with mounts of its own, which end with it. `command` makes them."""
    unshare = ["unshare", "--mount"] if os.geteuid() == 0 else ["unshare", "--user", "--map-root-user", "--mount"]
    return [*unshare, "sh", "-c", f'{command} && exec "$0" "$@"']


def seen_by(focus, path):
    """The path as the program sees it, with its own mounts."""
    return Path(f"/proc/{focus.pid}/root{path}")


def asides(folder):
    """What was moved aside in it."""
    return [path for path in folder.iterdir() if ".damaged-" in path.name]


class Lists(Scene):
    def assert_shown(self, focus, *names):
        for name in names:
            accessible.wait_for(focus.pid, name=name)

    def assert_not_shown(self, focus, name):
        until(lambda: not accessible.find(focus.pid, name=name), f"{name} is not shown any more")

    def notice(self, focus, *parts):
        return accessible.wait_for_text(focus.pid, lambda text: all(part in text for part in parts), f"a notice with {parts}")


class Syncing(Lists):
    def test_a_first_start_leaves_the_cloud_untouched(self):
        folder = scratch("parent") / "synced"
        focus = self.focus(synced=folder)
        focus.own_window()
        focus.wait_for_stored([])
        stays(lambda: not folder.exists(), "there is no synced folder")

    def test_a_change_from_another_machine_is_shown_and_kept_and_not_echoed(self):
        focus = self.focus(applications=[XTERM], domains=["one.example"])
        self.assert_shown(focus, "one.example", "XTerm")
        focus.own_window()
        for applications, domains in (([EDITOR, CALCULATOR], ["two.example", "b.example"]), ([], ["three.example"]), ([XTERM], [])):
            focus.write_lists(applications, domains)
            written = focus.synced_file.read_bytes()
            entry = focus.synced_file.stat()
            self.assert_shown(focus, *[name for _, name in applications], *domains)
            focus.wait_for_stored([identifier for identifier, _ in applications], domains)
            stays(lambda entry=entry: focus.synced_file.stat().st_ino == entry.st_ino, "the synced file is left alone")
            self.assertEqual(focus.synced_file.read_bytes(), written)
            self.assertEqual(focus.synced_file.stat().st_mtime_ns, entry.st_mtime_ns)
        self.assert_not_shown(focus, "three.example")
        self.assert_shown(focus, "No websites blocked")

    def test_a_change_that_is_written_in_place_is_taken_when_it_is_whole(self):
        focus = self.focus(applications=[XTERM], domains=["one.example"])
        self.assert_shown(focus, "one.example", "XTerm")
        whole = encoded_lists([EDITOR], ["two.example"])
        with open(focus.synced_file, "w") as file:
            file.write(whole[: len(whole) // 2])
            file.flush()
            stays(lambda: focus.stored_lists() == ([XTERM[0]], ["one.example"]), "half a file changes nothing")
            file.write(whole[len(whole) // 2 :])
        self.assert_shown(focus, "two.example", "Mousepad")
        focus.wait_for_stored([EDITOR[0]], ["two.example"])
        self.assertEqual(focus.synced_file.read_text(), whole)

    def test_a_foreign_file_changes_nothing_and_is_not_destroyed(self):
        focus = self.focus(applications=[XTERM], domains=["one.example"])
        self.assert_shown(focus, "one.example", "XTerm")
        for foreign in ("no JSON", "[]", '"text"', "{}", '{"blockedDomains": [1, 2], "blockedApplications": "[{}]"}', '{"blockedDomains": "one"}'):
            focus.synced_file.write_text(foreign)
            stays(lambda: focus.stored_lists() == ([XTERM[0]], ["one.example"]), f"{foreign} changes nothing", 0.5)
            self.assertEqual(focus.synced_file.read_text(), foreign)
        self.assert_shown(focus, "one.example", "XTerm")
        focus.write_lists([EDITOR], ["two.example"])
        focus.wait_for_stored([EDITOR[0]], ["two.example"])

    def test_each_list_is_taken_by_itself(self):
        focus = self.focus(applications=[XTERM], domains=["one.example"])
        self.assert_shown(focus, "one.example", "XTerm")
        focus.synced_file.write_text(json.dumps({"blockedDomains": ["two.example"], "blockedApplications": "nonsense"}))
        focus.wait_for_stored([XTERM[0]], ["two.example"])
        self.assert_shown(focus, "two.example", "XTerm")

    def test_a_synced_folder_that_vanishes_and_comes_back_is_followed(self):
        parent = scratch("parent")
        focus = self.focus(synced=parent / "synced", applications=[XTERM], domains=["one.example"])
        self.assert_shown(focus, "one.example", "XTerm")
        focus.own_window()
        for number in range(3):
            (parent / "synced").rename(parent / f"elsewhere-{number}")
            stays(lambda: focus.stored_lists() == ([XTERM[0]], focus.stored_lists()[1]), "the lists are kept", 0.5)
            name = f"number-{number}.example"
            focus.write_lists([XTERM], [name])
            focus.wait_for_stored([XTERM[0]], [name])
            self.assert_shown(focus, name, "XTerm")

    def test_an_empty_list_from_the_cloud_wins_at_the_start(self):
        config = scratch("config")
        first = self.focus(config=config, applications=[XTERM], domains=["one.example"])
        first.wait_for_stored([XTERM[0]], ["one.example"])
        first.own_window()
        first.stop()
        first.write_lists([], [])
        again = self.focus(config=config, synced=first.synced)
        self.assert_shown(again, "No websites blocked", "No applications blocked")
        again.wait_for_stored([])

    def test_local_lists_go_to_a_cloud_that_has_none(self):
        config = scratch("config")
        first = self.focus(config=config, applications=[XTERM], domains=["one.example"])
        first.wait_for_stored([XTERM[0]], ["one.example"])
        first.own_window()
        first.stop()
        again = self.focus(config=config)
        self.assert_shown(again, "one.example", "XTerm")
        until(again.synced_file.exists, "the cloud has the lists")
        until(lambda: json.loads(again.synced_file.read_text()).get("blockedDomains") == ["one.example"], "the cloud has the domains")
        self.assertIn(XTERM[0], json.loads(again.synced_file.read_text())["blockedApplications"])

    def test_a_list_that_a_person_wrote_by_hand_is_understood(self):
        focus = self.focus()
        focus.own_window()
        focus.synced_file.write_text(
            '{\n  "note": "mine",\n'
            '  "blockedApplications": "[ { \\"displayName\\": \\"A terminal\\",\\n \\"bundleIdentifier\\": \\"debian-xterm.desktop\\" } ]",\n'
            '  "blockedDomains": [\n    "z.example",\n    "a.example"\n  ]\n}\n'
        )
        self.assert_shown(focus, "A terminal", "z.example", "a.example")


class Damage(Lists):
    def damaged(self, content, **options):
        config = scratch("config")
        settings = config / "orvanta-focus" / "settings.json"
        settings.parent.mkdir()
        settings.write_bytes(content)
        return self.focus(config=config, **options)

    def test_damaged_settings_are_moved_aside_and_told(self):
        for content in (b'{"blockedDomains": ["one.exa', b"", b"\0" * 300, b"[]"):
            with self.subTest(content=content):
                focus = self.damaged(content, applications=[XTERM], domains=["one.example"])
                self.assert_shown(focus, "one.example", "XTerm")
                self.notice(focus, "settings.json", "moved aside")
                aside = asides(focus.settings_file.parent)
                self.assertEqual([path.read_bytes() for path in aside], [content])
                self.assertIn(str(aside[0]), focus.output)
                self.assertEqual(len(focus.output.splitlines()), 1, focus.output)
                focus.wait_for_stored([XTERM[0]], ["one.example"])
                focus.stop()

    def test_a_damaged_synced_file_is_moved_aside_only_when_ours_takes_its_place(self):
        config = scratch("config")
        first = self.focus(config=config, applications=[XTERM], domains=["one.example"])
        first.wait_for_stored([XTERM[0]], ["one.example"])
        first.own_window()
        first.stop()
        first.synced_file.write_text("not ours")
        again = self.focus(config=config, synced=first.synced)
        self.assert_shown(again, "one.example", "XTerm")
        self.notice(again, "orvanta-focus.json", "moved aside")
        self.assertEqual([path.read_text() for path in asides(again.synced)], ["not ours"])
        ours = json.loads(again.synced_file.read_text())
        self.assertEqual(ours["blockedDomains"], ["one.example"])
        self.assertEqual([application["bundleIdentifier"] for application in json.loads(ours["blockedApplications"])], [XTERM[0]])

    def test_a_synced_file_that_is_damaged_while_the_program_runs_is_told_when_it_is_moved_aside(self):
        focus = self.focus(domains=["one.example"])
        self.assert_shown(focus, "one.example")
        focus.own_window()
        focus.synced_file.write_text("not ours")
        accessible.press(accessible.wait_for(focus.pid, "push button", "Remove"))
        self.notice(focus, "orvanta-focus.json", "moved aside")
        self.assertEqual([path.read_text() for path in asides(focus.synced)], ["not ours"])
        self.assertEqual(json.loads(focus.synced_file.read_text())["blockedDomains"], [])

    def test_a_damaged_synced_file_is_left_alone_while_there_is_nothing_to_put_in_its_place(self):
        synced = scratch("synced")
        damaged = synced / "orvanta-focus.json"
        damaged.write_text("not ours")
        entry = damaged.stat()
        focus = self.focus(synced=synced)
        focus.own_window()
        focus.wait_for_stored([])
        stays(lambda: damaged.read_text() == "not ours" and asides(focus.synced) == [], "the file is left alone")
        self.assertEqual((damaged.stat().st_ino, damaged.stat().st_mtime_ns), (entry.st_ino, entry.st_mtime_ns))
        self.assertEqual(list(synced.iterdir()), [damaged])

    def test_a_full_disk_is_told_and_the_program_goes_on(self):
        config = scratch("config")
        filler = config / "filler"
        mount = f"mount -t tmpfs -o size=64k none {config} && mkdir {config}/orvanta-focus"
        focus = self.focus("--focus-active", config=config, applications=[EDITOR], domains=["one.example"], prefix=in_own_mounts(mount))
        focus.own_window()
        inside = seen_by(focus, focus.settings_file)
        with open(seen_by(focus, filler), "wb", buffering=0) as file, self.assertRaises(OSError) as full:
            while True:
                file.write(b"\1" * 512)
        self.assertEqual(full.exception.errno, errno.ENOSPC)
        stored = inside.read_bytes()
        focus.write_lists([CALCULATOR], [f"number-{number}.example" for number in range(500)])
        _, terminal = self.xterm()
        calculator, window = self.calculator()

        def is_covered():
            """The list is taken some time after it was written."""
            x11.activate(terminal)
            x11.activate(window)
            return happens(focus.covers)

        until(is_covered, "the calculator is blocked")
        self.assert_covered(focus)
        x11.key("Return")
        until(lambda: x11.is_iconified(self.any_window_of(calculator)), "the calculator is hidden")
        self.assert_uncovered(focus)
        self.bring_to_front(terminal)
        self.assert_stays_uncovered(focus)
        self.assertEqual(inside.read_bytes(), stored)
        self.assertIn(EDITOR[0], stored.decode())

    def any_window_of(self, process):
        return until(lambda: next(iter(x11.windows(pid=process.pid, visible=False)), None), "the window is there")

    def test_a_full_disk_is_told_in_the_window(self):
        config = scratch("config")
        mount = f"mount -t tmpfs -o size=64k none {config} && mkdir {config}/orvanta-focus && head -c 70000 /dev/zero >{config}/filler"
        focus = self.focus(config=config, applications=[XTERM], domains=["one.example"], prefix=in_own_mounts(f"({mount}; true)"))
        self.assert_shown(focus, "one.example", "XTerm")
        self.notice(focus, "settings.json", "could not be saved", "No space left on device")
        focus.write_lists([EDITOR], ["two.example"])
        self.assert_shown(focus, "two.example", "Mousepad")
        self.notice(focus, "settings.json", "could not be saved", "No space left on device")

    def test_a_read_only_synced_folder_is_told_and_the_lists_are_kept(self):
        config, synced = scratch("config"), scratch("synced")
        first = self.focus(config=config, applications=[XTERM], domains=["one.example"])
        first.wait_for_stored([XTERM[0]], ["one.example"])
        first.own_window()
        first.stop()
        focus = self.focus(config=config, synced=synced, prefix=in_own_mounts(f"mount -t tmpfs -o ro none {synced}"))
        self.assert_shown(focus, "one.example", "XTerm")
        self.notice(focus, "orvanta-focus.json", "could not be saved", "Read-only file system")
        focus.wait_for_stored([XTERM[0]], ["one.example"])

    def test_a_read_only_settings_folder_is_told_and_the_lists_work(self):
        config = scratch("config")
        focus = self.focus(config=config, applications=[XTERM], domains=["one.example"], prefix=in_own_mounts(f"mount -t tmpfs -o ro none {config}"))
        self.assert_shown(focus, "one.example", "XTerm")
        self.notice(focus, "could not be saved", "Read-only file system")


class Killing(Lists):
    ROUNDS = 40

    def test_the_settings_survive_being_killed_at_any_moment(self):
        random.seed(20)
        config, synced = scratch("config"), scratch("synced")
        numbers = itertools.count()
        known_domains, known_applications = {None}, {None}

        def write(focus):
            number = next(numbers)
            applications = [(f"org.example.App{number}.{index}.desktop", f"App {index}") for index in range(40)]
            domains = [f"list-{number}-{index}.example" for index in range(200)]
            known_domains.add(tuple(domains))
            known_applications.add(tuple(identifier for identifier, _ in applications))
            focus.write_lists(applications, domains)

        stored = (None, None)
        for _ in range(self.ROUNDS):
            focus = Application(config=config, synced=synced)
            self.keep(focus)
            write(focus)
            before = stored
            # From the first moments of the start to long after it.
            rounds = random.choice((0, 0, random.randrange(5), random.randrange(200)))
            if rounds:
                until(
                    lambda focus=focus, before=before: focus.stored_lists() not in ((None, None), before),
                    lambda focus=focus: f"the lists are stored\n{focus.output}",
                )
            for _ in range(rounds):
                write(focus)
            focus.kill()
            stored = focus.stored_lists()  # fails where it does not parse
            for values, known in zip(stored, (known_applications, known_domains)):
                self.assertIn(None if values is None else tuple(values), known)
            self.assertNotIn("moved aside", focus.output)
        self.assertNotIn(None, stored)

        last = self.focus(config=config, synced=synced)
        last.write_lists([XTERM], ["one.example"])
        self.assert_shown(last, "one.example", "XTerm")
        last.wait_for_stored([XTERM[0]], ["one.example"])
        self.assertEqual([path.name for path in config.joinpath("orvanta-focus").iterdir() if "damaged" in path.name], [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
