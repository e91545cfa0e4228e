"""The one-line changes of scripts/mutants: what of a C++ source may be changed, and into what.

A line is changed where its meaning can matter to a test. Comments and texts are blanked out before
anything is looked for; left out are preprocessor lines, declarations of types and names, rows of
tables of texts, what is told in the log or on the console, and contracts (`require`, `assert`).
The rules lean on clang-format: an operator between two terms has a blank on either side.
"""

import re
from typing import Iterator, NamedTuple


def key_of(file: str, text: str, nth: int, what: str, **_: object) -> str:
    """What tells a change from all others, and stays when lines are added elsewhere in its file."""
    return f"{file}|{text}|{nth}|{what}"


class Change(NamedTuple):
    """A change of one line."""

    file: str  # from the top of the project
    line: int  # from 1
    text: str  # the line, without the blanks round it
    nth: int  # which of the lines with that text, from 1
    what: str  # "column 5: < to <="; columns of `text`, from 1
    changed: str  # the whole line once changed

    @property
    def key(self) -> str:
        return key_of(self.file, self.text, self.nth, self.what)


# --- what is left out ----------------------------------------------------------------------------

NO_CODE = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])+\'',
    re.DOTALL,
)
TOLD_OR_REQUIRED = re.compile(
    r"\b(?:(?:log_?|lines_?|report)(?:\.|->)(?:line|timed|warn|warn_line|log_only)"
    r"|console(?:_error)?|require|assert|static_assert|std::fprintf)\("
)
DECLARATION = re.compile(
    r"\s*(?:#|namespace|using|template|friend|class|struct|enum|union|public:|private:|protected:)"
)
TABLE_OF_TEXTS = re.compile(r'\s*(?:\w*\{.*)?"')


def blanked(source: str) -> str:
    """The source with comments, texts and characters blanked out; the quotes of a text stay, and
    every other character keeps its place."""

    def blank(found: re.Match[str]) -> str:
        text = re.sub(r"[^\n]", " ", found[0])
        return '"' + text[1:-1] + '"' if found[0].startswith(('"', "R")) else text

    return NO_CODE.sub(blank, source)


def end_of_call(code: str, begin: int) -> int:
    """Behind the parenthesis that closes the first one from `begin`."""
    depth = 0
    for place in range(code.index("(", begin), len(code)):
        depth += (code[place] == "(") - (code[place] == ")")
        if depth == 0:
            return place + 1
    return len(code)


def lines_told_or_required(code: str) -> set[int]:
    """The lines, from 1, of log and console messages and of contracts."""
    lines: set[int] = set()
    for found in TOLD_OR_REQUIRED.finditer(code):
        first = code.count("\n", 0, found.start()) + 1
        last = first + code.count("\n", found.start(), end_of_call(code, found.start()))
        lines.update(range(first, last + 1))
    return lines


# --- what a line may become ----------------------------------------------------------------------

OPERATOR = re.compile(r"(?<= )(<=|>=|==|!=|<|>|&&|\|\||\+=|-=|\*=|/=|\+|-|\*|/)(?=\s|$)")
OTHER_OPERATOR = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=",
}  # fmt: skip
TEXTS_TOGETHER = re.compile(r'"|\bedit::|\bstd::to_string|\bstd::string')
WORD = re.compile(
    r"\b(?:std::(?:min|max|fmin|fmax|floor|ceil|min_element|max_element)|true|false)\b"
)
OTHER_WORD = {
    "std::min": "std::max", "std::max": "std::min", "std::fmin": "std::fmax",
    "std::fmax": "std::fmin", "std::floor": "std::ceil", "std::ceil": "std::floor",
    "std::min_element": "std::max_element", "std::max_element": "std::min_element",
    "true": "false", "false": "true",
}  # fmt: skip
SIGN = re.compile(r"(?:(?<=[(\[{])|(?<=[=?:,*/<>] )|(?<=return ))-(?=[\w(])")
NOT = re.compile(r"!(?=[\w(])")
NUMBER = re.compile(r"(?<![\w.'<])(\d+\.\d*(?:[eE][+-]?\d+)?|[1-9]\d*|0)([FfLlUuZz]*)(?![\w.'>])")
CONDITION = re.compile(r"\bif \((?P<all>[^;]*)\) \{$")
ASSIGNMENT = re.compile(r"[*\w][\w.:>-]*(?:[(\[].*?[)\]])?(?:[\w.:>-]*) [-+*/|&]?= .*;$")
CALL = re.compile(r"[\w.:>-]+\(.*\)[\w.()]*;$")
STEP = re.compile(r"(?:(?:\+\+|--)[\w.\[\]()]+|break|continue);$")


def other_number(digits: str) -> str:
    """One more for a whole number, one and a half times another one."""
    if digits.isdigit():
        return str(int(digits) + 1)
    return repr(float(digits) * 1.5 or 1.0)


def closed(text: str) -> bool:
    return text.count("(") == text.count(")") and text.count("{") == text.count("}")


def replacements(code: str, begins_statement: bool) -> Iterator[tuple[int, int, str]]:
    """Each change of a line of blanked code, without the blanks round it: from where to where, and
    what stands there instead."""
    if begins_statement and closed(code):
        if ASSIGNMENT.match(code) or CALL.match(code) or STEP.match(code):
            yield 0, len(code), ""
    for found in OPERATOR.finditer(code):
        if not (found[0] == "+" and TEXTS_TOGETHER.search(code)):
            yield *found.span(), OTHER_OPERATOR[found[0]]
    for found in WORD.finditer(code):
        yield *found.span(), OTHER_WORD[found[0]]
    for pattern in (SIGN, NOT):
        for found in pattern.finditer(code):
            yield *found.span(), ""
    for found in NUMBER.finditer(code):
        yield *found.span(), other_number(found[1]) + found[2]
    condition = CONDITION.search(code)
    if condition and " = " not in condition["all"]:
        yield *condition.span("all"), f"!({condition['all']})"


def changes_of(file: str, source: str) -> Iterator[Change]:
    """All changes of a source, in the order of its lines."""
    code = blanked(source)
    left_out = lines_told_or_required(code)
    seen: dict[str, int] = {}
    before = ";"
    for number, (line, plain) in enumerate(zip(source.split("\n"), code.split("\n")), 1):
        text, bare = line.strip(), plain.strip()
        nth = seen[text] = seen.get(text, 0) + 1
        begins_statement = before.endswith((";", "{", "}", ":"))
        before = bare or before
        if number in left_out or DECLARATION.match(plain) or TABLE_OF_TEXTS.match(plain):
            continue
        indent = len(line) - len(line.lstrip())
        shift = len(plain) - len(plain.lstrip()) - indent
        for begin, end, instead in replacements(bare, begins_statement):
            begin, end = begin + shift, end + shift
            old = text[begin:end]
            if instead.startswith("!("):
                instead = f"!({old})"  # with the texts that were blanked out
            what = f"{old} to {instead}" if instead else f"drop {old}"
            changed = line[:indent] + text[:begin] + instead + text[end:]
            yield Change(file, number, text, nth, f"column {begin + 1}: {what}", changed)
