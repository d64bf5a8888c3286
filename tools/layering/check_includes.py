#!/usr/bin/env python3
"""Checks every #include of ours against the include table of docs/ARCHITECTURE.md.

    check_includes.py [--root DIR]

DIR is the root of a clone (default: two folders up from this script). The
rules are read from DIR/docs/ARCHITECTURE.md, section "Which folder may include
which"; the files checked are the .h, .cpp and .grammar files below DIR/src,
DIR/apps, DIR/bench and DIR/tests. Each include that breaks a rule is printed as
"file:line: message"; the exit code is 1 when there is one, 0 when there is none,
and 2 when the table cannot be read.
"""

import argparse
import os
import re
import sys

# The subsystems of src/: an include whose first folder is one of these is ours.
SUBSYSTEMS = ("support", "frontend", "tree", "sqlgen", "dialects", "metadata", "model", "component",
              "transform", "surface", "localization")
CHECKED_TOPS = ("src", "apps", "bench", "tests")
EXTENSIONS = (".h", ".cpp", ".grammar")
TABLE_HEADING = "Which folder may include which"
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^">]+)[">]')
# Headers the generators write from a grammar, a token description or a node
# table in the including file's folder (or below it), and the meta-object code
# Qt's moc makes of a source file (X.moc of X.cpp).
GENERATED = (("Pars.h", ".grammar"), ("Scan.h", ".tokens"), (".gen.h", ".def"), (".moc", ".cpp"))


class TableError(Exception):
    pass


def read_rules(architecture_path):
    """The table as a list of (folder pattern, allowed patterns or None for everything)."""
    try:
        with open(architecture_path, encoding="utf-8") as f:
            lines = f.read().splitlines()
    except OSError as e:
        raise TableError(f"{architecture_path}: {e.strerror}")
    start = next((i for i, line in enumerate(lines) if line.lstrip("#").strip() == TABLE_HEADING), None)
    if start is None:
        raise TableError(f'{architecture_path}: no section "{TABLE_HEADING}"')
    rules = []
    for number, line in enumerate(lines[start + 1:], start + 2):
        if line.startswith("#"):
            break
        cells = [c.strip() for c in line.strip().strip("|").split("|")] if line.startswith("|") else []
        if len(cells) != 2 or cells[0] in ("Folder", "") or set(cells[0]) <= set("-:"):
            continue
        folders = re.findall(r"`([^`]+)`", cells[0])
        if not folders:
            raise TableError(f"{architecture_path}:{number}: a row names no folder")
        if cells[1] == "everything":
            allowed = None
        elif cells[1] == "nothing":
            allowed = []
        else:
            allowed = re.findall(r"`([^`]+)`", cells[1])
            if not allowed:
                raise TableError(f"{architecture_path}:{number}: say what {cells[0]} may include, or 'nothing'")
        for folder in folders:
            rules.append((folder, allowed))
    if not rules:
        raise TableError(f'{architecture_path}: the section "{TABLE_HEADING}" has no table')
    return rules


def matches(pattern, path):
    """Whether `path` (a folder or a header, with /) is what `pattern` names."""
    if pattern.endswith(".h"):
        return pattern == path
    want = pattern.split("/")
    have = path.split("/")
    if len(have) < len(want):
        return False
    return all(w == "*" or w == h for w, h in zip(want, have))


def rule_for(folder, rules):
    """The most specific row naming `folder`: (pattern, allowed), or None."""
    best = None
    for pattern, allowed in rules:
        if matches(pattern, folder) and (best is None or len(pattern.split("/")) > len(best[0].split("/"))):
            best = (pattern, allowed)
    return best


def describe(allowed):
    return "nothing but itself and support" if not allowed else ", ".join(allowed)


class Checker:
    def __init__(self, root, rules):
        self.root = root
        self.rules = rules
        self.problems = []
        self.includes = 0

    def generated_beside(self, directory, name):
        for suffix, source_ending in GENERATED:
            if not name.endswith(suffix):
                continue
            stem = os.path.basename(name[: -len(suffix)])
            for _, _, files in os.walk(directory):
                if stem + source_ending in files:
                    return True
        return False

    def check_file(self, relative):
        parts = relative.split("/")
        top, folder = parts[0], "/".join(parts[:-1])
        # Rows name src folders without "src/"; other folders by their path.
        own = "/".join(parts[1:-1]) if top == "src" else folder
        rule = rule_for(own, self.rules)
        test_subsystem = parts[1] if top == "tests" and len(parts) > 2 and parts[1] in SUBSYSTEMS else None
        if rule is None and test_subsystem:
            base = rule_for(test_subsystem, self.rules)
            allowed = None if base is None or base[1] is None else base[1] + [test_subsystem, "dialects/EngineInit.h"]
            rule = (f"tests/{test_subsystem}", allowed)
        if rule is None:
            self.problems.append(f"{relative}:1: no row of the include table names the folder '{own}'")
            return
        pattern, allowed = rule
        directory = os.path.join(self.root, folder)
        with open(os.path.join(self.root, relative), encoding="utf-8", errors="replace") as f:
            for number, line in enumerate(f, 1):
                m = INCLUDE.match(line)
                if not m:
                    continue
                target = m.group(2).strip()
                first = target.split("/")[0]
                if "/" in target and first in SUBSYSTEMS:
                    self.includes += 1
                    if allowed is None or first == "support" or matches(own, os.path.dirname(target)) \
                            or (test_subsystem and first == test_subsystem) \
                            or any(matches(a, target) or matches(a, os.path.dirname(target)) for a in allowed):
                        continue
                    self.problems.append(f'{relative}:{number}: "{target}": {pattern} may include '
                                         f"{describe(allowed)} (docs/ARCHITECTURE.md)")
                elif m.group(1) == '"':
                    self.includes += 1
                    if allowed is None or target in allowed or self.bare_include_found(relative, directory, target):
                        continue
                    self.problems.append(f'{relative}:{number}: "{target}" is neither beside the file nor '
                                         f"generated from its folder{' nor a helper of tests/common' if top == 'tests' else ''}")

    def bare_include_found(self, relative, directory, target):
        if self.generated_beside(directory, target):
            return True
        if "/" in target or ".." in target:
            return False
        places = [directory]
        parts = relative.split("/")
        if parts[0] == "tests" and len(parts) > 2:
            # A test suite's own folder, for its grammars' generated code, and the shared helpers.
            places += [os.path.join(self.root, "tests", parts[1]), os.path.join(self.root, "tests", "common")]
        return any(os.path.isfile(os.path.join(place, target)) for place in places)

    def run(self):
        checked = 0
        for top in CHECKED_TOPS:
            for base, dirs, files in os.walk(os.path.join(self.root, top)):
                dirs.sort()
                for name in sorted(files):
                    if name.endswith(EXTENSIONS):
                        self.check_file(os.path.relpath(os.path.join(base, name), self.root).replace(os.sep, "/"))
                        checked += 1
        return checked


def main(argv):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", default=os.path.normpath(os.path.join(os.path.dirname(__file__), "..", "..")))
    args = parser.parse_args(argv)
    try:
        rules = read_rules(os.path.join(args.root, "docs", "ARCHITECTURE.md"))
    except TableError as e:
        print(f"check_includes: {e}", file=sys.stderr)
        return 2
    checker = Checker(args.root, rules)
    files = checker.run()
    for problem in checker.problems:
        print(problem)
    if checker.problems:
        print(f"check_includes: {len(checker.problems)} include(s) break the layering", file=sys.stderr)
        return 1
    print(f"check_includes: {files} files, {checker.includes} includes of ours, all allowed")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
