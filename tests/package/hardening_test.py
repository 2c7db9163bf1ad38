#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of hardening.py on programs that a compiler makes with and without each protection.

usage: hardening_test.py COMPILER
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

from hardening import missing, missing_of_library

COMPILER = sys.argv.pop() if len(sys.argv) > 1 else "c++"
SOURCE = r"""
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

int main(int count, char** arguments)
{
    char text[16];
    std::strcpy(text, arguments[0]);
    std::vector<char> copy(text, text + std::strlen(text));
    std::printf("%s %c\n", text, copy[static_cast<std::size_t>(count)]);
}
"""
CODE = ["-O2", "-fPIE", "-fstack-protector-strong", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=3", "-D_GLIBCXX_ASSERTIONS"]
LINK = ["-pie", "-Wl,-z,relro", "-Wl,-z,now"]


class Hardening(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "program.cpp").write_text(SOURCE)

    def built(self, *options):
        program = self.folder / "program"
        subprocess.run([COMPILER, self.folder / "program.cpp", "-o", program, *CODE, *LINK, *options], check=True,
                       stderr=subprocess.DEVNULL)
        return str(program)

    def test_nothing_is_missing_with_all_options(self):
        self.assertEqual(missing(self.built(), optimized=True), [])

    def test_each_option_that_is_taken_away_is_missing(self):
        for options, name in (
                (["-Wl,-z,norelro"], "read-only relocations"),
                (["-Wl,-z,lazy"], "immediate binding"),
                (["-no-pie"], "position-independent program"),
                (["-fno-stack-protector"], "stack protector"),
                (["-U_GLIBCXX_ASSERTIONS"], "assertions of the standard library"),
                (["-U_FORTIFY_SOURCE"], "checked copies")):
            with self.subTest(name):
                self.assertEqual(missing(self.built(*options), optimized=True), [name])

    def test_copies_need_not_be_checked_without_optimization(self):
        self.assertEqual(missing(self.built("-U_FORTIFY_SOURCE"), optimized=False), [])

    def test_a_static_library_needs_the_stack_protector(self):
        for option, lacks in (("-fstack-protector-strong", []), ("-fno-stack-protector", ["stack protector"])):
            with self.subTest(option):
                self.built("-c", option)
                archive = self.folder / "library.a"
                archive.unlink(missing_ok=True)
                subprocess.run(["ar", "rcs", archive, self.folder / "program"], check=True)
                self.assertEqual(missing_of_library(str(archive)), lacks)

    def test_a_shared_library_needs_what_the_linker_does(self):
        library = self.built("-fPIC", "-shared", "-fno-stack-protector", "-U_GLIBCXX_ASSERTIONS")
        self.assertEqual(missing_of_library(library), [])
        library = self.built("-fPIC", "-shared", "-Wl,-z,lazy", "-Wl,-z,norelro")
        self.assertEqual(missing_of_library(library), ["read-only relocations", "immediate binding"])


if __name__ == "__main__":
    unittest.main()
