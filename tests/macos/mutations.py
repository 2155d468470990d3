#!/usr/bin/env python3
"""Makes mistakes in the macOS layer, one at a time, and shows which check finds each.

A check that finds nothing proves nothing. So each mistake of the list is put into a copy of its source, and goes through the
checks in this order until one of them finds it:

  compile    to a Mach-O object, as the build does it
  selectors  check_selectors.py over all objects, with this one in the place of the right one
  run        the test on GNUstep, linked with this one in the place of the right one

  mutations.py --build DIR [NAME…]      DIR is the configured and built folder; without names, every mistake

Prints a line a mistake, and exits with 1 if one is found by nothing, or not by the check that is there for it.
"""
import argparse
import os
import shlex
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

import check_selectors

HERE = Path(__file__).resolve().parent
LAYER = HERE.parent.parent / "src" / "platform" / "macos"


@dataclass
class Mistake:
    name: str
    source: str
    right: str
    wrong: str
    check: str
    test: str = ""


MISTAKES = [
    # Names.
    Mistake("a message that nobody takes", "system_extension_manager.mm", "submitRequest:request]", "submit:request]", "compile"),
    Mistake("a required delegate method, misspelt", "extension_request_delegate.mm",
            "request didFailWithError:", "request didFailWith:", "compile"),
    Mistake("nil where there has to be something", "workspace_url_opener.mm", "openURL:address]", "openURL:address ? nil : nil]", "compile"),
    Mistake("an optional delegate method, misspelt", "extension_request_delegate.mm",
            "request foundProperties:", "request didFindProperties:", "selectors"),
    Mistake("an override that overrides nothing", "interactive_blocking_panel.mm", "(BOOL)canBecomeKeyWindow", "(BOOL)canBecomeKey", "selectors"),
    # Values.
    Mistake("a panel that activates the application", "interactive_blocking_panel.mm",
            "NSWindowStyleMaskNonactivatingPanel", "NSWindowStyleMaskBorderless", "run", "test_macos_panels"),
    Mistake("a panel below full-screen windows", "interactive_blocking_panel.mm",
            "NSScreenSaverWindowLevel", "NSFloatingWindowLevel", "run", "test_macos_panels"),
    Mistake("a panel that stays out of full-screen Spaces", "interactive_blocking_panel.mm",
            " | NSWindowCollectionBehaviorFullScreenAuxiliary", "", "run", "test_macos_panels"),
    Mistake("a filter of the wrong grade", "network_filter_manager.mm",
            "manager.grade = configuration.grade == FilterGrade::firewall", "manager.grade = configuration.grade != FilterGrade::firewall",
            "run", "test_macos_website"),
    Mistake("a query for an item's attributes", "keychain_secret_store.mm", "kSecReturnData : [NSNumber numberWithBool:YES]",
            "kSecReturnData : [NSNumber numberWithBool:NO]", "run", "test_macos_stores"),
    Mistake("service and account, the other way round", "keychain_secret_store.mm",
            "kSecAttrService : toNSString(service),\n            (__bridge id)kSecAttrAccount : toNSString(account)",
            "kSecAttrService : toNSString(account),\n            (__bridge id)kSecAttrAccount : toNSString(service)", "run", "test_macos_stores"),
    Mistake("notifications that are held back", "darwin_notifications.mm",
            "CFNotificationSuspensionBehaviorDeliverImmediately", "CFNotificationSuspensionBehaviorHold", "run", "test_macos_website"),
    Mistake("an extension that is not replaced", "extension_request_delegate.mm",
            "isReplaced ? OSSystemExtensionReplacementActionReplace : OSSystemExtensionReplacementActionCancel",
            "isReplaced ? OSSystemExtensionReplacementActionCancel : OSSystemExtensionReplacementActionReplace", "run", "test_macos_website"),
    Mistake("the wrong notification centre", "workspace_activation_monitor.mm",
            "NSWorkspace.sharedWorkspace.notificationCenter", "NSNotificationCenter.defaultCenter", "run", "test_macos_workspace"),
    Mistake("changes of any store", "ubiquitous_cloud_store.mm",
            "NSUbiquitousKeyValueStore.defaultStore, std::move(changed)", "nil, std::move(changed)", "run", "test_macos_stores"),
    Mistake("badges in the place of alerts", "intents_system_focus.mm",
            "UNAuthorizationOptionAlert", "UNAuthorizationOptionBadge", "run", "test_macos_sampling"),
    Mistake("events of this session alone", "event_idle_source.mm",
            "kCGEventSourceStateHIDSystemState", "kCGEventSourceStateCombinedSessionState", "run", "test_macos_sampling"),
    # Order, and what belongs together.
    Mistake("setters in another order", "interactive_blocking_panel.mm",
            "    panel.opaque = YES;\n    panel.hasShadow = NO;\n", "    panel.hasShadow = NO;\n    panel.opaque = YES;\n", "run", "test_macos_panels"),
    Mistake("kinds of event in another order", "event_idle_source.mm",
            "kCGEventMouseMoved, kCGEventLeftMouseDown", "kCGEventLeftMouseDown, kCGEventMouseMoved", "run", "test_macos_sampling"),
    Mistake("the delegate after the request is submitted", "system_extension_manager.mm",
            "        request.delegate = delegate;\n        [OSSystemExtensionManager.sharedManager submitRequest:request];\n",
            "        [OSSystemExtensionManager.sharedManager submitRequest:request];\n        request.delegate = delegate;\n",
            "run", "test_macos_website"),
    Mistake("a new provider in the place of the saved one", "network_filter_manager.mm",
            "existing ? existing : [[NEFilterProviderConfiguration alloc] init]",
            "existing ? [[NEFilterProviderConfiguration alloc] init] : [[NEFilterProviderConfiguration alloc] init]", "run", "test_macos_website"),
    Mistake("a DNS proxy under another name", "network_dns_proxy_manager.mm",
            "protocol.providerBundleIdentifier)", "protocol.providerBundleIdentifier.lowercaseString)", "run", "test_macos_website"),
    Mistake("an observer that stays registered", "darwin_notifications.mm",
            "CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetDarwinNotifyCenter(), this);", "", "run", "test_macos_website"),
    # Threads.
    Mistake("an answer where the system gives it", "network_filter_manager.mm",
            "hop([answer, result = toResult(error)] { (*answer)(result); });", "(*answer)(toResult(error)); (void)hop;",
            "run", "test_macos_website"),
    Mistake("a main queue that is none", "main_queue.mm",
            "dispatch_async(dispatch_get_main_queue(), ^{ (*shared)(); });", "(*shared)();", "run", "test_macos_website"),
    Mistake("an answer to an owner that is gone", "intents_system_focus.mm",
            "hop([answer, status] { (*answer)(toAuthorisation(status)); });",
            "onMainQueue([answer, status] { (*answer)(toAuthorisation(status)); }); (void)hop;", "run", "test_macos_sampling"),
]


def ninja_command(build, target):
    """The command by which the build makes `target` itself."""
    commands = subprocess.run(["ninja", "-C", build, "-t", "commands", "-s", target], check=True, capture_output=True, text=True).stdout
    command = shlex.split(commands.splitlines()[-1])
    # What CMake puts around a command: "cd DIR && …" and ": && … && :".
    for part in " \0 ".join(command).split(" \0 && \0 "):
        words = part.split(" \0 ")
        if len(words) > 2 and words[0] not in ("cd", ":"):
            return [word for word in words if Path(word).name != "ccache"]
    sys.exit(f"mutations: no command for {target} in {commands}")


def with_other(command, replacements):
    """The command with other files in the place of some, and without a word of what it depends on."""
    words = []
    skip = 0
    for word in command:
        if skip:
            skip -= 1
            continue
        if word in ("-MF", "-MT"):
            skip = 1
            continue
        if word == "-MD":
            continue
        words.append(replacements.get(word, word))
    return words


def run(command, build, timeout=60, **options):
    return subprocess.run(command, cwd=build, capture_output=True, text=True, timeout=timeout, **options)


def first_line(text, *wanted):
    lines = [line.strip() for line in text.splitlines() if line.strip()]
    for line in lines:
        if any(word in line for word in wanted):
            return line
    return lines[-1] if lines else "no word"


class Checks:
    def __init__(self, build, otool):
        self.build = build
        self.otool = otool
        self.mach = build / "tests" / "macos" / "mach"
        self.objects = {path: check_selectors.read_object(otool, path) for path in sorted(self.mach.glob("*.o"))}

    def compile(self, mistake, source, folder):
        target = self.mach / f"{Path(mistake.source).stem}.o"
        command = ninja_command(self.build, target.relative_to(self.build))
        done = run(with_other(command, {str(LAYER / mistake.source): str(source), str(target): str(folder / "mach.o")}), self.build)
        return None if done.returncode == 0 else first_line(done.stderr, "error:").replace(f"{source}:", "")

    def selectors(self, mistake, source, folder):
        objects = {path: found for path, found in self.objects.items() if path.stem != Path(mistake.source).stem}
        objects[mistake.source] = check_selectors.read_object(self.otool, folder / "mach.o")
        return next(check_selectors.differences(objects, HERE / "allowed_selectors.txt"), None)

    def run(self, mistake, source, folder):
        target = f"tests/macos/CMakeFiles/macos_on_gnustep.dir/__/__/src/platform/macos/{mistake.source}.o"
        command = ninja_command(self.build, target)
        done = run(with_other(command, {str(LAYER / mistake.source): str(source), target: str(folder / "run.o")}), self.build)
        if done.returncode != 0:
            return first_line(done.stderr, "error:")
        test = f"tests/{mistake.test}"
        linked = run(with_other(ninja_command(self.build, test), {target: str(folder / "run.o"), test: str(folder / mistake.test)}), self.build)
        if linked.returncode != 0:
            sys.exit(f"mutations: {mistake.name}: cannot be linked\n{linked.stderr}")
        environment = os.environ | {"QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software", "HOME": str(folder)}
        return self.first_failure([folder / mistake.test], environment)

    def first_failure(self, test, environment):
        """The first failure that the test reports; it need not go on after that."""
        with subprocess.Popen(test, cwd=self.build, env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True) as running:
            said = next((line.strip() for line in running.stdout if line.startswith(("FAIL!", "QFATAL"))), None)
            if said:
                running.kill()
        return said or (None if running.returncode == 0 else f"the test ends with {running.returncode}")


def control(checks, mistake):
    """What the test says of the right source, which goes the same way as the wrong ones do: nothing."""
    with tempfile.TemporaryDirectory() as folder:
        return checks.run(mistake, LAYER / mistake.source, Path(folder))


def find(checks, mistake):
    """Which check finds the mistake, and what it says."""
    right = (LAYER / mistake.source).read_text(encoding="utf-8")
    if right.count(mistake.right) != 1:
        return None, f"{mistake.source} does not have the text once that is to be changed"
    with tempfile.TemporaryDirectory() as folder:
        source = Path(folder) / mistake.source
        source.write_text(right.replace(mistake.right, mistake.wrong), encoding="utf-8")
        for check in ("compile", "selectors", "run") if mistake.test else ("compile", "selectors"):
            said = getattr(checks, check)(mistake, source, Path(folder))
            if said:
                return check, said
    return None, "nothing finds it"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True, type=Path)
    parser.add_argument("--otool", default="llvm-otool-19")
    parser.add_argument("names", nargs="*")
    options = parser.parse_args()
    checks = Checks(options.build.resolve(), options.otool)
    mistakes = [mistake for mistake in MISTAKES if not options.names or mistake.name in options.names]

    failures = 0
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        first_of_tests = {mistake.test: mistake for mistake in reversed(mistakes) if mistake.test}
        for test, said in zip(first_of_tests, pool.map(lambda one: control(checks, one), first_of_tests.values())):
            if said:
                failures += 1
                print(f"WRONG: {test} fails without any mistake: {said}")
        for mistake, (check, said) in zip(mistakes, pool.map(lambda one: find(checks, one), mistakes)):
            is_right = check == mistake.check
            failures += not is_right
            print(f"{'' if is_right else 'WRONG: '}{mistake.name} ({mistake.source})\n    {check or 'nothing'}: {said[:200]}")
    print(f"mutations: {len(mistakes)} mistakes, {failures} not found as they should be")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
