"""A network of the test's own: the hook script posts to one fixed port, which on the machine may be anybody's."""
import ctypes
import os
import subprocess

_CLONE_NEWNET = 0x40000000
_CLONE_NEWUSER = 0x10000000


def enter():
    """Moves this process, and what it starts from now on, into a network where there is nothing but loopback. The desktop
    stays within reach: it is spoken to over sockets in the file system."""
    libc = ctypes.CDLL(None, use_errno=True)
    user, group = os.getuid(), os.getgid()
    flags = _CLONE_NEWNET if user == 0 else _CLONE_NEWNET | _CLONE_NEWUSER
    if libc.unshare(flags) != 0:
        number = ctypes.get_errno()
        raise OSError(number, f"a network of its own cannot be had: {os.strerror(number)}")
    if user != 0:
        for name, content in (("setgroups", "deny"), ("uid_map", f"{user} {user} 1"), ("gid_map", f"{group} {group} 1")):
            with open(f"/proc/self/{name}", "w", encoding="ascii") as file:
                file.write(content)
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
