#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests of exported_symbols.py on output of nm."""
import unittest

from exported_symbols import differences, symbols_of

LISTING = """\
CString::Find(wchar_t const*, int) const T 1a2b 40
operator==(CString const&, wchar_t const*) T 1a6b 10
CObject::classCObject D 7e00 20
CWnd::Show() T 1a7b 10
vtable for CWnd V 7f00 58
vtable for CFile V 7fa0 30
typeinfo for CWnd V 7f58 18
void Apply<int>(int) W 2000 20
_end B 8000
"""


class ExportedSymbols(unittest.TestCase):
    def test_functions_by_name_objects_with_their_size_and_tables_of_own_classes(self):
        self.assertEqual(symbols_of(LISTING), [
            "CObject::classCObject, 32 bytes",
            "CString::Find(wchar_t const*, int) const",
            "CWnd::Show()",
            "operator==(CString const&, wchar_t const*)",
            "vtable for CWnd, 88 bytes",
        ])

    def test_constructors_that_share_a_demangled_name_count_once(self):
        self.assertEqual(symbols_of("CWnd::CWnd() T 10 8\nCWnd::CWnd() T 10 8\n"), ["CWnd::CWnd()"])

    def test_what_is_missing_and_what_is_new_is_shown(self):
        self.assertEqual(differences(["f(int)", "g()"], ["f(long)", "g()"]),
                         ["- f(int)", "+ f(long)"])

    def test_another_virtual_function_is_a_difference(self):
        self.assertEqual(len(differences(["vtable for CWnd, 88 bytes"],
                                         ["vtable for CWnd, 96 bytes"])), 2)

    def test_a_line_that_is_not_understood_is_refused(self):
        with self.assertRaises(ValueError):
            symbols_of("CWnd::CWnd()\n")
        with self.assertRaises(ValueError):
            symbols_of("CWnd::Show() U 0 0\n")


if __name__ == "__main__":
    unittest.main()
