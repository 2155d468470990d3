#!/usr/bin/env python3
"""Compares what Mach-O objects implement and send with the list of what they may.

A misspelt method of an optional protocol or of an override compiles, and is never called; a method whose declaration is
misspelt as well compiles too. So every name stands in the list, as it is publicly documented, with the types that it takes
and returns where we implement it.

  check_selectors.py --otool OTOOL --allowed LIST OBJECT…

Prints one line a difference, in either direction, and exits with 1 if there is any.
"""
import argparse
import re
import subprocess
import sys

ARM64 = 0x0100000C
MACH_O_64 = 0xFEEDFACF


def is_mach_object(path):
    with open(path, "rb") as file:
        header = file.read(16)
    words = [int.from_bytes(header[i:i + 4], "little") for i in range(0, 16, 4)]
    return words[0] == MACH_O_64 and words[1] == ARM64 and words[3] == 1


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def implemented(otool, path):
    """(class, kind, selector, types) of each method of the classes that the object defines; types of C++ are only "…"."""
    types = None
    name = None
    for line in output(otool, "-ov", path).splitlines():
        if found := re.match(r"\s+name \S+ (\S+)$", line):
            name = found[1]
        elif found := re.match(r"\s+types \S+ (.*)$", line):
            types = "…" if "{" in found[1] else found[1]
        elif found := re.match(r"\s+imp ([-+])\[(\w+) (\S+)\]$", line):
            # A protocol's own methods are listed in the same way, all with the first symbol of the object as their place.
            if name == found[3] and not name.startswith(".cxx_"):
                yield found[2], found[1], name, types


def named(otool, path):
    """Every selector that the object names: those that it implements, those that it sends, those of the protocols it adopts."""
    for line in output(otool, "-v", "-s", "__TEXT", "__objc_methname", path).splitlines():
        if found := re.match(r"[0-9a-f]+\s+(\S+)$", line):
            yield found[1]


def read_allowed(path):
    methods, messages = set(), set()
    with open(path, encoding="utf-8") as file:
        for line in file:
            words = line.split("#")[0].split()
            if not words:
                continue
            if words[0] == "method":
                owner, kind_and_name, types = words[1:]
                methods.add((owner, kind_and_name[0], kind_and_name[1:], types))
            elif words[0] == "message":
                messages.add(words[1])
            else:
                sys.exit(f"{path}: neither a method nor a message: {line.strip()}")
    return methods, messages


def read_object(otool, path):
    """The methods that the object has, and the selectors that it names."""
    return set(implemented(otool, path)), set(named(otool, path))


def found_in(objects):
    """Which method, and which message that is not only such a method's name, stands in which of the objects."""
    methods, names = {}, {}
    for path, (its_methods, its_names) in objects.items():
        methods |= dict.fromkeys(its_methods, path)
        names |= dict.fromkeys(its_names, path)
    own = {name for _, _, name, _ in methods}
    messages = {name: path for name, path in names.items() if name not in own and not name.startswith((".cxx_", "m_"))}
    return methods, messages


def differences(objects, allowed):
    methods, messages = found_in(objects)
    allowed_methods, allowed_messages = read_allowed(allowed)
    for owner, kind, name, types in sorted(methods.keys() - allowed_methods):
        yield f"{methods[owner, kind, name, types]}: implements {kind}[{owner} {name}] {types}, which is not in the list"
    for owner, kind, name, types in sorted(allowed_methods - methods.keys()):
        yield f"{allowed}: nothing implements {kind}[{owner} {name}] {types}"
    for name in sorted(messages.keys() - allowed_messages):
        yield f"{messages[name]}: names {name}, which is not in the list"
    for name in sorted(allowed_messages - messages.keys()):
        yield f"{allowed}: nothing names {name}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--otool", required=True)
    parser.add_argument("--allowed", required=True)
    parser.add_argument("--print", action="store_true", help="prints what there is, in the form of the list")
    parser.add_argument("objects", nargs="+")
    options = parser.parse_args()

    found = [f"{path}: is no Mach-O object for arm64" for path in options.objects if not is_mach_object(path)]
    objects = {} if found else {path: read_object(options.otool, path) for path in options.objects}
    if options.print:
        methods, messages = found_in(objects)
        for owner, kind, name, types in sorted(methods):
            print(f"method {owner} {kind}{name} {types}")
        for name in sorted(messages):
            print(f"message {name}")
        return 0
    if objects:
        found += differences(objects, options.allowed)
    for difference in found:
        print(difference)
    print(f"check_selectors: {len(options.objects)} objects, {len(found)} differences")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
