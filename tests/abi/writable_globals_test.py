#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of writable_globals.py on output of nm."""
import unittest

from writable_globals import errors_of, parsed, writable_of

LISTING = """\


Symbols from libtiltpole_core.a[Filter.cpp.o]:

Name                  Value           Class        Type         Size             Line  Section

(anonymous namespace)::smoothing|0000000000000000|   b  |            OBJECT|0000000000000018|     |.bss
guard variable for Sums()::best|0000000000000008|   b  |            OBJECT|0000000000000008|     |.bss
Sums(int (*)(int|long))::best|0000000000000010|   d  |            OBJECT|0000000000000008|     |.data.rel.local
Pending()::blocks|0000000000000000|   b  |               TLS|0000000000000018|     |.tbss._ZZ7PendingvE6blocks
CObject::classCObject|0000000000000000|   D  |            OBJECT|0000000000000020|     |.data.rel.ro.local
kDigits|0000000000000000|   r  |            OBJECT|0000000000000020|     |.rodata
DW.ref.__gxx_personality_v0|0000000000000000|   V  |            OBJECT|0000000000000008|     |.data.rel.local.DW.ref
__unnamed_1|0000000000000000|   d  |            OBJECT|0000000000000008|     |.data
Shared|0000000000000000|   C  |            OBJECT|0000000000000008|     |*COM*
CFile::Close()|0000000000000000|   T  |              FUNC|0000000000000008|     |.text
memcpy|                |   U  |            NOTYPE|                |     |*UND*
"""
PAGE = "| state | of |\n|---|---|\n| what `filter` remembers | all objects |\n"


class WritableGlobals(unittest.TestCase):
    def test_objects_that_can_be_written_to_are_found_without_guards_and_the_compilers_own(self):
        self.assertEqual(writable_of(LISTING), {
            "(anonymous namespace)::smoothing", "Sums(int (*)(int|long))::best", "Pending()::blocks", "Shared"})

    def test_an_object_that_no_line_names_is_an_error(self):
        self.assertEqual(errors_of({"smoothing"}, {}, PAGE), ["smoothing is writable, but not in the list"])

    def test_a_line_may_name_several_objects(self):
        listed = parsed("# why\n*::map = what `filter`\n")
        self.assertEqual(errors_of({"CWnd::map", "CView::map"}, listed, PAGE), [])
        self.assertEqual(len(errors_of({"CWnd::maps"}, listed, PAGE)), 1)

    def test_a_row_that_is_not_there_is_an_error(self):
        self.assertEqual(errors_of({"smoothing"}, {"smoothing": "the handler"}, PAGE),
                         ["smoothing: no row begins with 'the handler'"])


if __name__ == "__main__":
    unittest.main()
