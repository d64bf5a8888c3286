"""The include check against planted includes, over the real include table."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.normpath(os.path.join(HERE, "..", ".."))
CHECKER = os.path.join(HERE, "check_includes.py")

# (file, include, allowed): one planted file each, in an otherwise empty tree.
CASES = [
    ("src/tree/Bad.cpp", '"dialects/sql92/SQL92SyntaxProvider.h"', False),
    ("src/tree/Good.cpp", '"frontend/SyntaxProvider.h"', True),
    ("src/frontend/Bad.cpp", '"metadata/MetadataContainer.h"', False),
    ("src/frontend/Good.cpp", '"metadata/MetadataForward.h"', True),
    ("src/support/Bad.cpp", '"frontend/Parser.h"', False),
    ("src/metadata/dataset/Good.cpp", '"tree/Tokens.h"', True),
    ("src/metadata/Bad.cpp", '"dialects/EngineInit.h"', False),
    ("src/dialects/sql92/Good.cpp", '"metadata/MetadataProvider.h"', True),
    ("src/dialects/sql92/Bad.cpp", '"model/QueryModel.h"', False),
    ("src/dialects/Good.cpp", '"dialects/sql92/SQL92SyntaxProvider.h"', True),
    ("src/model/Bad.cpp", '"dialects/sql92/SQL92SyntaxProvider.h"', False),
    ("src/surface/Bad.cpp", '"dialects/sql92/SQL92SyntaxProvider.h"', False),
    ("src/localization/Bad.cpp", '"frontend/SQLContext.h"', False),
    ("src/dialects/toy/Bad.grammar", '"model/QueryModel.h"', False),
    ("src/tree/BadGenerated.cpp", '"SQL92Pars.h"', False),
    ("src/tree/BadBare.cpp", '"Missing.h"', False),
    ("src/tree/System.cpp", "<dialects/sql92/SQL92SyntaxProvider.h>", False),
    ("tests/tree/Bad.cpp", '"dialects/sql92/SQL92SyntaxProvider.h"', False),
    ("tests/tree/Good.cpp", '"dialects/EngineInit.h"', True),
    ("tests/metadata/Good.cpp", '"metadata/MetadataContainer.h"', True),
    ("tests/dialects/Good.cpp", '"dialects/sql92/SQL92SyntaxProvider.h"', True),
    ("apps/mvsql/Good.cpp", '"dialects/sql92/SQL92SyntaxProvider.h"', True),
]


def run_checker(root):
    return subprocess.run([sys.executable, CHECKER, "--root", root], capture_output=True, text=True)


class PlantedIncludes(unittest.TestCase):
    def setUp(self):
        self.root = tempfile.mkdtemp(prefix="check-includes-")
        os.makedirs(os.path.join(self.root, "docs"))
        shutil.copy(os.path.join(ROOT, "docs", "ARCHITECTURE.md"), os.path.join(self.root, "docs"))

    def tearDown(self):
        shutil.rmtree(self.root)

    def plant(self, path, include):
        full = os.path.join(self.root, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        with open(full, "w", encoding="utf-8") as f:
            f.write(f"// planted\n#include <vector>\n#include {include}\n")

    def test_each_planted_include(self):
        for path, include, allowed in CASES:
            with self.subTest(path=path, include=include):
                self.plant(path, include)
                result = run_checker(self.root)
                self.assertEqual(result.returncode, 0 if allowed else 1, result.stdout + result.stderr)
                if not allowed:
                    self.assertIn(f"{path}:3:", result.stdout)
                os.remove(os.path.join(self.root, path))

    def test_a_bare_include_of_a_header_generated_beside_it(self):
        self.plant("src/dialects/toy/ToyProvider.cpp", '"ToyPars.h"')
        self.assertEqual(run_checker(self.root).returncode, 1)
        open(os.path.join(self.root, "src/dialects/toy/Toy.grammar"), "w").close()
        self.assertEqual(run_checker(self.root).returncode, 0)

    def test_a_folder_no_row_names(self):
        self.plant("src/newsubsystem/X.cpp", '"support/Class.h"')
        result = run_checker(self.root)
        self.assertEqual(result.returncode, 1)
        self.assertIn("no row of the include table names the folder 'newsubsystem'", result.stdout)

    def test_a_missing_table_is_an_error_of_its_own(self):
        with open(os.path.join(self.root, "docs", "ARCHITECTURE.md"), "w", encoding="utf-8") as f:
            f.write("# Architecture\n\nNo table here.\n")
        result = run_checker(self.root)
        self.assertEqual(result.returncode, 2)
        self.assertIn('no section "Which folder may include which"', result.stderr)


if __name__ == "__main__":
    unittest.main()
