"""Runs a page's commands as a reader would, in a folder that looks like a clone with a build."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

# What is run, by its first words, and not looked at by the rules.
RUN = re.compile(r"cat > \S+ <<|(/usr/sbin/)?mosquitto -c |export |sleep [01]$|sqlite3 |(build/dev/tools/vptzctl/)?vptzctl |"
                 r"(build/dev/service/)?vptzd |cmake -G Ninja -S first |cmake --build first/|first/build/first$")

PATIENCE = 100  # seconds for all commands of a page

BEGIN = """
await() {{
  local tries=600
  until "$@" >/dev/null 2>&1; do ((tries-- > 0)) || {{ echo "in vain: $*" >&2; return 1; }}; sleep 0.05; done
}}
broker_answers() {{ vptzctl --bus "unix:$PWD/build/dev/run/bus.sock" status; (($? != 3)); }}
end() {{ kill $(jobs -p) 2>/dev/null; wait; }}
trap end EXIT
trap 'exit 1' TERM INT HUP
cd {clone}
"""

# A page that starts no service of its own finds one.
SERVICE = """
printf 'listener 0 %s\\nallow_anonymous true\\n' "$PWD/build/dev/run/bus.sock" >build/dev/run/broker.conf
mosquitto -c build/dev/run/broker.conf >broker.log 2>&1 &
await broker_answers || exit 1
export DORV_BUS_ADDRESS=unix:$PWD/build/dev/run/bus.sock
vptzd --cameras 2 >service.log 2>&1 &
await vptzctl status || exit 1
"""

# Another database than the build's own, and no fixed port.
VPTZD = """#!/bin/sh
for word; do shift; [ "$word" = 8080 ] && word=0; set -- "$@" "$word"; done
exec setpriv --pdeathsig TERM "{program}" --database "$VPTZ_TEST_FOLDER/vptz.db" "$@"
"""

# What goes on until it is asked to end is asked when it has written something.
VPTZCTL = """#!/bin/sh
case "$*" in
  *--until-still*) ;;
  'ptz watch '*)
    output=$(mktemp -p "$VPTZ_TEST_FOLDER")
    "{program}" "$@" >"$output" &
    until [ -s "$output" ] || ! kill -0 $! 2>/dev/null; do sleep 0.05; done
    kill -TERM $!
    wait $!
    code=$?
    cat "$output"
    exit $code ;;
esac
exec "{program}" "$@"
"""


def is_run(text):
    return bool(RUN.match(text))


def write_program(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)
    path.chmod(0o755)


def prepare(folder, build, blocks):
    """The folder "clone", and beside it what the page tells to write."""
    clone = folder / "clone"
    for name, text, program in (("service/vptzd", VPTZD, "service/vptzd"),
                                ("tools/vptzctl/vptzctl", VPTZCTL, "tools/vptzctl/vptzctl")):
        write_program(clone / "build/dev" / name, text.format(program=build / program))
    (clone / "build/dev/run").mkdir()
    (clone / "build/dev/run/vptz.conf").write_text("")
    # As root the broker becomes a user of its own, who must get at these.
    for path in (folder, clone, clone / "build", clone / "build/dev", clone / "build/dev/run"):
        path.chmod(0o777)
    (clone / "first").mkdir()
    for block in blocks:
        if block.language == "cmake" and "project(first" in block.text:
            (clone / "first/CMakeLists.txt").write_text(block.text)
        elif block.language == "cpp" and '"first"' in block.text:
            (clone / "first/first.cc").write_text(block.text)
    (clone / "vptz_client/build").mkdir(parents=True)
    (clone / "vptz_client/build/dev").symlink_to(build)
    return clone


def script_of(commands, clone):
    text = BEGIN.format(clone=clone)
    if not any("mosquitto -c" in command.text for command in commands):
        text += SERVICE
    for number, command in enumerate(commands):
        text += f"\necho '@{number}'\n{command.text}\necho \"@{number} $?\"\n"
        if "mosquitto -c" in command.text:
            text += "await broker_answers || exit 1\n"
        elif re.search(r"vptzd\b[^\n]*&", command.text):
            text += "await vptzctl status || exit 1\n"
    return text


def environment(build, clone):
    programs = clone / "build/dev"
    paths = [programs / "service", programs / "tools/vptzctl", os.environ["PATH"], "/usr/sbin", "/usr/local/sbin"]
    return {**os.environ, "PATH": ":".join(map(str, paths)), "VPTZ_TEST_FOLDER": str(programs / "run"),
            "LD_LIBRARY_PATH": str(build / "tests/examples/library"), "NO_COLOR": "1", "HOME": str(clone)}


def base_folder():
    """In memory where programs may be run from there."""
    memory = "/dev/shm"
    usable = os.access(memory, os.W_OK | os.X_OK) and not os.statvfs(memory).f_flag & os.ST_NOEXEC
    return memory if usable else tempfile.gettempdir()


def run(build, blocks, commands):
    """For each command its exit code (None: it was not reached) and what it wrote."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="vptz-", dir=base_folder()))
    try:
        clone = prepare(folder, build, blocks)
        (folder / "script").write_text(script_of(commands, clone))
        with open(folder / "output", "w+", encoding="utf-8", errors="replace") as output:
            bash = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", "bash", folder / "script"], stdout=output,
                                    stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, env=environment(build, clone))
            try:
                bash.wait(PATIENCE)
            except subprocess.TimeoutExpired:
                bash.terminate()
                bash.wait()
        return results((folder / "output").read_text(errors="replace"), len(commands))
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def results(text, count):
    found = []
    for number in range(count):
        match = re.search(rf"^@{number}\n(.*?)^@{number} (\d+)$", text, re.S | re.M)
        found.append((int(match[2]), match[1]) if match else (None, text))
    return found
