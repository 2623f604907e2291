"""What a program and all that it starts write: learnt from the system calls, so that nothing that
others do at the same time is mistaken for it, and a file that is soon gone again is seen, too."""

import os
import re

_calls = ("execve,chdir,open,openat,openat2,creat,mkdir,mkdirat,mknod,mknodat,rename,renameat,"
          "renameat2,link,linkat,symlink,symlinkat,unlink,unlinkat,rmdir,truncate,chmod,fchmodat,"
          "bind")
_string = r'"((?:[^"\\]|\\.)*)"'
# Descriptors are shown with their paths: "openat(AT_FDCWD</home>, "a", O_RDONLY) = 3</home/a>".
_at = r"(?:AT_FDCWD|\d+)<([^>]*)>, " + _string
_call = re.compile(r"^(\w+)\((.*)\)\s+= (-?\d+)(?:<(.*)>)?(?: .*)?$")
_socket = re.compile(r'sa_family=AF_UNIX, sun_path="([^"]*)"')


def command(folder):
    """What to put in front of a program; `folder` is for what is learnt."""
    return ["strace", "-ff", "-qq", "-y", "-s", "4096", "--seccomp-bpf", f"--trace={_calls}",
            "-o", os.path.join(folder, "calls")]


def writtenPaths(folder):
    """path -> the programs that made, opened for writing, renamed or removed it."""
    found = {}
    for file in os.scandir(folder):
        with open(file.path, encoding="utf-8", errors="surrogateescape") as lines:
            for program, path in _writes(lines):
                found.setdefault(os.path.normpath(path), set()).add(program)
    return found


def _writes(lines):
    program = "?"
    here = "/"
    for line in lines:
        call = _call.match(line)
        if not call or call[3].startswith("-"):
            continue
        name, arguments, _, opened = call.groups()
        if name == "execve":
            program = os.path.basename(re.match(_string, arguments)[1])
        elif name in ("open", "openat", "openat2", "creat"):
            if re.search(r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC", arguments) or name == "creat":
                # The path that was opened is told where it can be found out.
                yield program, opened or _last(arguments, here)
        elif name == "bind":
            for path in _socket.findall(arguments):
                yield program, path
        elif name == "chdir":
            here = os.path.join(here, re.match(_string, arguments)[1])
        elif name.startswith(("symlink", "link")):
            yield program, _last(arguments, here)
        else:
            for path in _paths(arguments, here):
                yield program, path


def _paths(arguments, here):
    if "<" in arguments:
        found = [os.path.join(folder, path) for folder, path in re.findall(_at, arguments)]
    else:
        found = [os.path.join(here, path) for path in re.findall(_string, arguments)]
    # Of a process that nobody may look into there are numbers in place of names.
    return found or [f"what cannot be read in ({arguments})"]


def _last(arguments, here):
    return _paths(arguments, here)[-1]
