"""What scripts/mutants changes in a source, and what it leaves alone."""

import pathlib
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
from mutant_changes import changes_of  # noqa: E402


def changed(source):
    """The changed lines of a source, without the blanks in front."""
    return [change.changed.strip() for change in changes_of("a.cpp", source)]


class Changes(unittest.TestCase):
    def test_operators_between_terms(self):
        self.assertEqual(changed("const bool less = a < b;"), ["const bool less = a <= b;"])
        self.assertEqual(
            changed("return a >= b && c != d;"),
            ["return a > b && c != d;", "return a >= b || c != d;", "return a >= b && c == d;"],
        )
        self.assertEqual(changed("return a - b / c;"), ["return a + b / c;", "return a - b * c;"])

    def test_types_are_no_operators(self):
        for line in ("std::vector<int> f(const char* text, auto&& other);", "return p->value;"):
            self.assertEqual(changed(line), [], line)

    def test_signs_words_and_numbers(self):
        self.assertEqual(changed("return -a;"), ["return a;"])
        self.assertEqual(changed("return !a;"), ["return a;"])
        self.assertEqual(changed("return true;"), ["return false;"])
        self.assertEqual(changed("return std::min(a, b);"), ["return std::max(a, b);"])
        self.assertEqual(changed("return u(3);"), ["return u(4);"])
        self.assertEqual(changed("return 0.5F;"), ["return 0.75F;"])
        self.assertEqual(changed("return 0.0;"), ["return 1.0;"])
        self.assertEqual(changed("FixedArray<float, 3> x2;"), [])

    def test_condition_is_negated(self):
        self.assertIn('if (!(name == "a b")) {', changed('if (name == "a b") {'))

    def test_statements_are_dropped(self):
        for line in ("x = y;", "f(x, i) += y;", "++count_;", "break;", "s.clear();"):
            self.assertIn("", changed(line), line)

    def test_part_of_a_statement_is_not_dropped(self):
        self.assertEqual(changed("const float x =\n    f(y);"), [])
        self.assertEqual(changed("call(a,\n     b);"), [])

    def test_declarations_are_not_dropped(self):
        for line in ("int n = m;", "void f(int);", "return f(x);"):
            self.assertEqual(changed(line), [], line)

    def test_comments_and_texts_are_left_alone(self):
        for source in (
            "// a < b, 3",
            "/* a < b\n   and c < d */",
            'const auto text = "a < 3 // \\" && b";',
            'const auto text = R"(\na < b\n)";',
            "#if TORVEX < 3",
            '    {"KEY", 3},',
            '    CaseKey{"KEY", 3},',
            "using Row = Array<3>;",
        ):
            self.assertEqual(changed(source), [], source)
        self.assertEqual(changed("return c == '<';  // a < b"), ["return c != '<';  // a < b"])

    def test_messages_and_contracts_are_left_alone(self):
        for source in (
            "require(a < b && c > 3, what);",
            "log.line(text(a,\n              b < 3));",
            "console(text(a < 3));",
            "static_assert(n == 3);",
        ):
            self.assertEqual(changed(source), [], source)

    def test_lines_behind_a_message_are_changed(self):
        self.assertEqual(changed("log.line(text(a,\n b));\nreturn a < b;"), ["return a <= b;"])

    def test_change_keeps_all_other_lines_and_the_blanks_in_front(self):
        (change,) = changes_of("a.cpp", "// first\n\n    return a < b;  // why\n")
        self.assertEqual(change.line, 3)
        self.assertEqual(change.changed, "    return a <= b;  // why")
        self.assertEqual(change.what, "column 10: < to <=")

    def test_equal_lines_are_told_apart_and_keep_their_keys(self):
        source = "return a < b;\nreturn a < b;\n"
        keys = [change.key for change in changes_of("a.cpp", source)]
        self.assertEqual(len(set(keys)), 2)
        later = [change.key for change in changes_of("a.cpp", "int n;\n" + source)]
        self.assertEqual(keys, later)

    def test_every_change_of_the_sources_has_a_key_of_its_own(self):
        for file in sorted((ROOT / "src").rglob("*.cpp")):
            source = file.read_text(encoding="utf-8")
            name = file.relative_to(ROOT).as_posix()
            found = list(changes_of(name, source))
            self.assertEqual(len({change.key for change in found}), len(found), name)
            lines = source.split("\n")
            for change in found:
                self.assertNotEqual(change.changed, lines[change.line - 1], change.key)


if __name__ == "__main__":
    unittest.main()
