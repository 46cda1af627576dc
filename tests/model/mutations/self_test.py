#!/usr/bin/env python3
"""self_test.py: changes.py changes what it says, once each, and nothing else."""

import unittest

import changes


class ChangesTest(unittest.TestCase):
    def of(self, source):
        """The changes of a source of one line, without its name and its line: "1 -> 2"."""
        enumerators = changes.enumerations(["enum class Bound { preferred, alternative, none };"])
        return [change.name().split(" | ")[2] for change in changes.changes("file.cpp", source, enumerators)]

    def expect(self, source, *expected):
        self.assertEqual(self.of(source), list(expected))

    # What is changed

    def test_number_becomes_one_greater(self):
        self.expect("x = 0;", "0 -> 1")
        self.expect("x = 1000U;", "1000U -> 1001U")
        self.expect("x = 0x8000;", "0x8000 -> 0x8001")
        self.expect("x = 0x7FFFu;", "0x7FFFu -> 0x8000u")
        self.expect("x = 1.5;", "1.5 -> 2.5")
        self.expect("x = 4'294U;", "4'294U -> 4295U")

    def test_attributes_stay(self):
        self.expect('[[gnu::format(printf, 5, 6)]] void f(int x = 1);', "1 -> 2")
        self.expect('__attribute__((no_sanitize("undefined"))) int f() { return x[y[1]]; }', "1 -> 2")

    def test_constants_are_exchanged(self):
        self.expect("x = {true, false};", "true -> false", "false -> true")
        self.expect("return ResultFailed;", "ResultFailed -> ResultOk")
        self.expect("x = std::numeric_limits<int>::min();", "min -> max")

    def test_enumerator_becomes_the_next_one_of_its_enumeration(self):
        self.expect("return Bound::preferred;", "preferred -> alternative")
        self.expect("return Bound::none;", "none -> preferred")

    def test_level_of_a_message_becomes_another_one(self):
        self.expect("f(TraceCode::error);", "error -> moduleRegistrationError")
        self.expect("f(TraceCode::notice);", "notice -> error")

    def test_null_becomes_an_address_of_nothing(self):
        self.expect("int* p = nullptr;", "nullptr -> Nowhere{}")

    def test_null_that_is_compared_with_stays(self):
        self.expect("x = p == nullptr;", "== -> !=")

    def test_operators_are_exchanged(self):
        for operator, other in (("==", "!="), ("<", "<="), (">=", ">"), ("&&", "||"), ("+", "-"), ("*", "/"), (">>", "<<")):
            self.expect(f"x = a {operator} b;", f"{operator} -> {other}")
        self.expect("++x;", "++ -> --")
        self.expect("x += y;", "+= -> -=")
        self.expect("x = a % b;", "% -> *")

    def test_question_after_a_code_is_exchanged(self):
        self.expect("x = isFailure(code);", "isFailure -> isSuccess")

    def test_not_and_the_sign_of_a_number_are_taken_away(self):
        self.expect("x = !y;", "! -> ")
        self.expect("x = -y;", "- -> ")
        self.expect("return -1;", "- -> ", "1 -> 2")

    def test_conditions_are_negated(self):
        self.expect("if (wanted) f();", "wanted -> not so")
        self.expect("while (a < b) f();", "a < b -> not so", "< -> <=")
        self.expect("for (; a < b; f()) {}", "a < b -> not so", "< -> <=")
        self.expect("return wanted ? a : b;", "wanted -> not so")
        self.expect("f(a, b && c ? d : e);", "&& -> ||", "b && c -> not so")

    def test_condition_that_another_change_negates_is_not_negated_as_well(self):
        self.expect("if (!wanted) f();", "! -> ")
        self.expect("if (a == b) f();", "== -> !=")
        self.expect("if (isFailure(code)) f();", "isFailure -> isSuccess")

    def test_last_letter_of_a_string_becomes_the_next(self):
        self.expect('f("Rx");', '"Rx" -> "Ry"')
        self.expect('f("channel.9");', '"channel.9" -> "channel.0"')
        self.expect('f("jazz.");', '"jazz." -> "jaza."')

    def test_string_without_a_letter_gets_another_mark(self):
        self.expect('f(".");', '"." -> ","')
        self.expect('f("_");', '"_" -> "-"')
        self.expect('f("");', '"" -> "x"')

    def test_what_printf_makes_a_number_of_stays(self):
        self.expect('f("at %lu");', '"at %lu" -> "au %lu"')
        self.expect('f("%s.%d");', '"%s.%d" -> "%s,%d"')
        self.expect('f("%zu");', '"%zu" -> "%zux"')

    def test_what_a_macro_is_made_of_is_changed(self):
        self.expect("#define TWICE(x) (2 * (x))", "2 -> 3", "* -> /")

    # What is not

    def test_comments_and_the_preprocessor_are_left_out(self):
        self.expect("// 1 < 2\n/* 1 + 1 */")
        self.expect('#include "Header.h"')
        self.expect("#if defined(__GNUC__) && VERSION > 1\n#endif")

    def test_brackets_of_templates_and_types_are_no_operators(self):
        self.expect("static_cast<int>(x);")
        self.expect("void f(const char* a, int& b, int&& c);")
        self.expect("template <typename Type> class X;")

    def test_operation_without_a_body_has_no_number(self):
        self.expect("virtual int f() = 0;")
        self.expect("virtual int f() const = 0;")

    def test_declaration_of_what_is_exchanged_stays(self):
        self.expect("bool isFailure(Code code);")
        self.expect("enum { ResultOk = 0 };", "0 -> 1")

    # How

    def test_change_is_made_in_its_place_alone(self):
        source = "a = 1 + 1;\n"
        made = [change.applied(source) for change in changes.changes("file.cpp", source, {})]
        self.assertEqual(made, ["a = 2 + 1;\n", "a = 1 - 1;\n", "a = 1 + 2;\n"])

    def test_negation_takes_the_whole_condition(self):
        source = "x = a || b ? c : d;\n"
        self.assertIn("x = !(a || b) ? c : d;\n",
                      [change.applied(source) for change in changes.changes("file.cpp", source, {})])

    def test_lines_keep_their_numbers(self):
        change, = changes.changes("file.cpp", "p = nullptr;\n", {})
        self.assertTrue(change.applied("p = nullptr;\n").endswith("#line 1\np = Nowhere{};\n"))

    def test_same_change_of_one_line_is_numbered(self):
        self.expect("f(1, 1);", "1 -> 2", "1 -> 2 (2)")


if __name__ == "__main__":
    unittest.main()
