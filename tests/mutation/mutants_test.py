#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Which mutants a source has."""
import unittest

import mutants


class MutantsOfASource(unittest.TestCase):
    def lines_of(self, body):
        source = "int f(int a, bool b)\n{\n" + body + "\n}\n"
        found = []
        for mutant in mutants.mutants_of(source):
            changed = mutants.apply(source, mutant).split("\n")
            found.append((mutant.kind, "\n".join(changed[2:-2])))
        return found

    def test_each_operator_constant_text_and_statement_changes(self):
        for body, expected in {
            "return a + 7;": [
                ("statement", ";"), ("result", "return {};"), ("operator", "return a - 7;"),
                ("constant", "return a + 8;"), ("constant", "return a + 6;")],
            'g("abc");': [("statement", ";"), ("text", 'g("bc");'), ("text", 'g("ab");')],
            'g("");': [("statement", ";"), ("text", 'g("x");')],
            'g("<>^");': [("statement", ";"), ("text", 'g(">^");'), ("text", 'g("<^");'),
                          ("text", 'g("<>");')],
            "g('a');": [("statement", ";"), ("constant", r"g('\x62');"), ("constant", r"g('\x60');")],
            "g(0x0FU);": [("statement", ";"), ("constant", "g(0x10U);"), ("constant", "g(0xeU);")],
            "g(0.5);": [("statement", ";"), ("constant", "g(1.0);"), ("constant", "g(0.25);")],
            "g(!b);": [("statement", ";"), ("operator", "g(b);")],
            "++a;": [("statement", ";"), ("operator", "--a;")],
            "return b ? a : -a;": [
                ("statement", ";"), ("result", "return {};"), ("choice", "return false ? a : -a;"),
                ("choice", "return true ? a : -a;"), ("operator", "return b ? a : a;")],
        }.items():
            with self.subTest(body):
                found = self.lines_of(body)
                self.assertEqual(sorted(found), sorted(expected))

    def test_conditions_become_constant_and_lose_each_operand(self):
        self.assertEqual(self.lines_of("if (a < 1 && b)\ng();"), [
            ("operand", "if (true && b)\ng();"), ("condition", "if (false)\ng();"),
            ("condition", "if (true)\ng();"), ("operator", "if (a <= 1 && b)\ng();"),
            ("constant", "if (a < 2 && b)\ng();"), ("constant", "if (a < 0 && b)\ng();"),
            ("operator", "if (a < 1 || b)\ng();"), ("operand", "if (a < 1 && true)\ng();")])

    def test_a_condition_that_declares_keeps_its_declaration(self):
        self.assertEqual(self.lines_of("if (const auto* p = g())\nreturn *p;"), [
            ("condition", "if (const auto* p = g(); false)\nreturn *p;"),
            ("condition", "if (const auto* p = g(); true)\nreturn *p;"),
            ("result", "if (const auto* p = g())\nreturn {};")])

    def test_loops_are_left_out(self):
        self.assertIn(("condition", "while (false)\ng();"), self.lines_of("while (b)\ng();"))
        self.assertIn(("condition", "for (int i = a; false; ++i)\ng();"),
                      self.lines_of("for (int i = a; i < a; ++i)\ng();"))
        self.assertIn(("statement", "if (false) for (const auto& x : y)\ng();"),
                      self.lines_of("for (const auto& x : y)\ng();"))

    def test_two_calls_in_a_row_change_places_also_in_a_lambda(self):
        self.assertIn(("order", "h();\ng();"), self.lines_of("g();\nh();"))
        self.assertIn(("order", "q([&] {\nh();\ng();\n});"), self.lines_of("q([&] {\ng();\nh();\n});"))

    def test_the_same_call_on_two_objects_keeps_its_order(self):
        kinds = [kind for kind, _ in self.lines_of("a.show(1);\nb->show(2);")]
        self.assertNotIn("order", kinds)
        self.assertIn(("order", "a.show(2);\na.show(1);"), self.lines_of("a.show(1);\na.show(2);"))
        self.assertIn(("order", "b.hide(2);\na.show(1);"), self.lines_of("a.show(1);\nb.hide(2);"))

    def test_templates_references_comments_and_directives_stay(self):
        self.assertEqual(self.lines_of("using A = std::vector<int>; // a < b\n#define X 1"), [])
        self.assertEqual([kind for kind, _ in self.lines_of("const std::vector<int>& v = w;")],
                         ["statement"])


if __name__ == "__main__":
    unittest.main()
