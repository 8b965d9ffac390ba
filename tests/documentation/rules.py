"""What is looked at in a command that is not run: whether everything it names is there. One rule for each kind."""
import functools
import json
import re
import shlex
import subprocess


class Wrong(Exception):
    pass


def require(truth, what):
    if not truth:
        raise Wrong(what)


class Tree:
    """The source tree and one build of it."""

    def __init__(self, root, build):
        self.root, self.build = root, build
        self.presets = json.loads((root / "CMakePresets.json").read_text())

    def preset(self, kind, name):
        found = [preset for preset in self.presets[f"{kind}Presets"] if preset["name"] == name]
        require(found and not found[0].get("hidden"), f"there is no {kind} preset {name}")

    @functools.cached_property
    def cmake_texts(self):
        folders = ["src", "platform", "service", "tools", "tests", "benchmarks", "fuzz", "bindings", "examples", "cmake"]
        return {path: path.read_text() for folder in folders for pattern in ("CMakeLists.txt", "*.cmake")
                for path in (self.root / folder).rglob(pattern)}

    def target(self, name, folder=None):
        made = re.compile(r"(?:add_executable|add_library|add_custom_target|vptz_\w*test)\(\s*" + re.escape(name) + r"\b")
        require(any(made.search(text) for path, text in self.cmake_texts.items()
                    if folder is None or path.parent == self.root / folder),
                f"there is no target {name}" + (f" in {folder}" if folder else ""))

    @functools.cached_property
    def options(self):
        return set(re.findall(r"^(\w+):\w+=", (self.build / "CMakeCache.txt").read_text(), re.M))

    def option(self, assignment):
        name = assignment.split("=")[0].split(":")[0]
        # What an application's project looks for is not in our own cache.
        require(name in self.options or name == "vptz_client_DIR", f"there is no CMake variable {name}")

    @functools.cached_property
    def tests(self):
        names = []
        for path in [*(self.root / "tests").rglob("*.cc"), *(self.root / "fuzz").rglob("*.cc")]:
            for suite, case in re.findall(r"^(?:TYPED_)?TEST(?:_[FP])?\((\w+), *(\w+)\)", path.read_text(), re.M):
                names.append(f"{suite}.{case}")
        for text in self.cmake_texts.values():
            names += re.findall(r"add_test\(NAME ([\w.]+)", text)
        return names

    def test_pattern(self, pattern):
        # Each alternative must find something, not only one of them.
        inner = re.fullmatch(r"(\^?)\(([^()]*)\)(.*)", pattern)
        alternatives = [inner[1] + part + inner[3] for part in inner[2].split("|")] if inner else [pattern]
        for alternative in alternatives:
            require(any(re.search(alternative, name) for name in self.tests), f"no test has a name like {alternative}")

    def setting(self, name):
        found = subprocess.run(["grep", "-rqwF", name, *(str(self.root / folder) for folder in
                                                        ("tests", "src", "platform", "service", "scripts"))])
        require(found.returncode == 0, f"nothing reads the environment variable {name}")

    def is_package(self, name):
        text = (self.root / "scripts/setup").read_text() + (self.root / "debian/control").read_text()
        return bool(re.search(rf"^(Package: )?{re.escape(name)}(:|$)", text, re.M))


def options_of(words):
    """Options with their values: [("-B", "build/x"), ("--preset", "dev"), (None, "operand")]."""
    with_value = {"-B", "-S", "-R", "--preset", "--build", "--target", "--install", "--test-dir", "--timeout"}
    result, rest = [], list(words)
    while rest:
        word = rest.pop(0)
        if word in with_value:
            require(rest, f"{word} has no value")
            result.append((word, rest.pop(0)))
        elif word.startswith("-j") or word == "--output-on-failure":
            result.append((word, ""))
        elif word.startswith("-D"):
            result.append(("-D", word[2:]))
        else:
            result.append((None, word))
    return result


def check_cmake(tree, words):
    for option, value in options_of(words[1:]):
        if option == "--preset":
            tree.preset("build" if "--build" in words else "configure", value)
        elif option == "--build" and value == "--preset":
            raise Wrong("a preset is not a folder")
        elif option == "-D":
            tree.option(value)
        elif option == "--target":
            tree.target(value)
        elif option in ("--build", "--install", "-B"):
            require(re.match(r"(build|first/build)(/|$)", value), f"{value} is not a folder that is built in")
        elif option not in ("-S",) and not (option or "").startswith("-j"):
            raise Wrong(f"what is {option or ''} {value}?")


def check_cmake_command(tree, words):
    # "cmake --build --preset dev": the preset stands for the folder.
    if words[1:3] == ["--build", "--preset"]:
        tree.preset("build", words[3])
        words = [words[0], *words[4:]]
    check_cmake(tree, words)


def check_ctest(tree, words):
    for option, value in options_of(words[1:]):
        if option == "--preset":
            tree.preset("test", value)
        elif option == "-R":
            tree.test_pattern(value)
        elif option == "--timeout":
            require(value.isdigit(), f"{value} is no number of seconds")
        elif option == "--test-dir":
            require(value.startswith("build/"), f"{value} is not a folder that is built in")
        elif option is None:
            raise Wrong(f"what is {value}?")


def check_script(tree, words):
    path = tree.root / words[0]
    require(path.is_file() and path.stat().st_mode & 0o100, f"there is no program {words[0]}")
    if words[1:2] == ["-R"]:
        require("ctest" in path.read_text(), "it does not hand arguments to ctest")
        return tree.test_pattern(words[2])
    for word in words[1:]:
        if re.fullmatch(r"\.\.\.|[A-Z_]+|[0-9]+", word):
            continue  # stands for something, or a number
        require(re.search(rf"(?<![\w-]){re.escape(word)}(?![\w-])", path.read_text()), f"it does not know {word}")
    return None


def check_built_program(tree, words):
    match = re.fullmatch(r"\.?/?build/\w+/(?:(\S*)/)?(\w+)", words[0])
    tree.target(match[2], match[1])


def check_apt(tree, words):
    require(words[1] in ("install", "update", "remove", "purge"), f"apt knows no {words[1]}")
    for word in words[2:]:
        if not word.startswith("-") and not word.endswith(".deb"):
            require(tree.is_package(word.split("/")[0]), f"nothing here tells of a package {word}")


def check_systemctl(tree, words):
    for word in words[2:]:
        name = word.removesuffix(".service") + ".service"
        require(word.startswith("-") or (tree.root / "packaging/systemd" / name).exists(), f"there is no unit {name}")


def check_install(tree, words):
    """A file that the package vptzd has among its examples."""
    name = words[-2].removeprefix("/usr/share/doc/vptzd/examples/")
    shipped = [line.split("/")[-1] for line in (tree.root / "debian/vptzd.examples").read_text().splitlines()]
    require(name in shipped, f"there is no example {words[-2]}")


def check_compiler(tree, words):
    package = re.search(r"pkg-config [-\w ]*?(\w+)\)", " ".join(words))
    require(package and (tree.root / "cmake" / f"{package[1]}.pc.in").exists(), "pkg-config does not know the library")


def check_cd(tree, words):
    match = re.fullmatch(r"build/\w+/(\S+)", words[1])
    require(match and (tree.root / match[1]).is_dir(), f"nothing is built in {words[1]}")


def check_loop(tree, text):
    """for NAME in WORDS; do ./TARGET_${NAME}... ARGUMENTS; done"""
    match = re.fullmatch(r"for (\w+) in ([\w ]+); do\n\s*\./(\S+) [^\n]*\ndone", text)
    require(match, "not a loop over programs")
    for value in match[2].split():
        tree.target(match[3].replace("${" + match[1] + "}", value))


RULES = [
    (r"cmake$", check_cmake_command),
    (r"ctest$", check_ctest),
    (r"(\./)?scripts/[\w-]+$|\.ci/run$", check_script),
    (r"(\./)?build/\w+/\S+$", check_built_program),
    (r"apt(-get)?$", check_apt),
    (r"systemctl$", check_systemctl),
    (r"install$", check_install),
    (r"(c|g)\+\+$", check_compiler),
    (r"cd$", check_cd),
]


def simple_commands(text):
    """The commands between "&&", each as its words without assignments and what runs it otherwise."""
    for part in text.split(" && "):
        words = shlex.split(part, comments=True)
        assignments = []
        while words and re.fullmatch(r"[A-Z_]+=.*", words[0]):
            assignments.append(words.pop(0))
        if words[:1] == ["sudo"]:
            words.pop(0)
        if words[:2] == ["chrt", "-f"]:
            words = words[3:]
        yield assignments, words


def check(tree, text):
    """Raises Wrong when the command names something that is not there, or when no rule is about it."""
    if text.startswith("for "):
        return check_loop(tree, text)
    for assignments, words in simple_commands(text):
        for assignment in assignments:
            tree.setting(assignment.split("=")[0])
        rules = [rule for pattern, rule in RULES if re.match(pattern, words[0])]
        require(len(rules) == 1, "no rule tells how to check this command")
        rules[0](tree, words)
    return None
