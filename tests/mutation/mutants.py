"""Finds what can be mutated in the library, and writes mutants into its text.

A mutant is a text in front of a place and one behind it. Both ask trelMutant()
whether this one is switched on; if not, what stands between them is as it was.
"""

import hashlib
from dataclasses import dataclass

from clang.cindex import CursorKind as K, Index, TranslationUnit, TypeKind as T

RELATIONAL = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"),
    "==": ("!=",), "!=": ("==",), "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",),
    "+=": ("-=",), "-=": ("+=",),
}
FUNCTIONS = {K.FUNCTION_DECL, K.CXX_METHOD, K.CONSTRUCTOR, K.DESTRUCTOR, K.FUNCTION_TEMPLATE,
             K.CONVERSION_FUNCTION}
INTEGERS = {T.INT, T.UINT, T.LONG, T.ULONG, T.LONGLONG, T.ULONGLONG, T.DOUBLE}
MOST = 65_536  # mutants, as in Mutant.cpp
# What a constant expression needs stays as it is.
CONSTANT = {K.ENUM_DECL, K.STATIC_ASSERT, K.TEMPLATE_NON_TYPE_PARAMETER, K.PARM_DECL}


@dataclass
class Mutant:
    file: str       # below the root
    start: int      # in bytes
    end: int
    before: str     # with %d where the number goes
    behind: str
    what: str       # "negated", "removed", "< becomes <="
    line: int
    function: str
    text: str       # of the place, in one line
    text_lines: int
    key: str = ""   # the same wherever the place moves
    number: int = 0


class Finder:
    """All mutants of one file of the library and of the headers that it includes."""

    def __init__(self, root, flags):
        self.root = root
        self.flags = flags
        self.index = Index.create()
        self.sources = {}
        self.found = {}

    def read(self, source):
        unit = self.index.parse(str(self.root / source), args=self.flags)
        errors = [d for d in unit.diagnostics if d.severity >= 3]
        if errors:
            raise SystemExit(f"{source}: {errors[0]}")
        for cursor in unit.cursor.get_children():
            self.visit(cursor, "", None)

    def mutants(self):
        """All, each under a key of its own, in no order that matters."""
        seen = {}
        for mutant in sorted(self.found.values(), key=lambda m: (m.file, m.start, m.what)):
            key = f"{mutant.file} {mutant.function}: {mutant.text} [{mutant.what}]"
            seen[key] = seen.get(key, 0) + 1
            mutant.key = key if seen[key] == 1 else f"{key} #{seen[key]}"
            yield mutant

    # ---- Walking the tree

    def visit(self, cursor, function, result):
        file = cursor.location.file
        path = file.name.removeprefix(f"{self.root}/") if file else ""
        if not path.startswith("smartcomp/"):
            return
        if cursor.kind in FUNCTIONS:
            function = qualified(cursor)
            result = cursor.result_type.get_canonical()
        elif cursor.kind == K.FIELD_DECL:
            function = qualified(cursor)
        elif cursor.kind == K.LAMBDA_EXPR:
            result = None  # what it returns is not what the function does
        if cursor.kind in CONSTANT or is_constexpr(cursor):
            return
        if function:
            self.mutate(path, cursor, function, result)
        for child in cursor.get_children():
            self.visit(child, function, result)

    def mutate(self, path, cursor, function, result):
        kind = cursor.kind
        children = list(cursor.get_children())
        place = (path, function)
        if kind in (K.BINARY_OPERATOR, K.COMPOUND_ASSIGNMENT_OPERATOR):
            self.operator(place, cursor, children)
        elif kind == K.CALL_EXPR and cursor.spelling.startswith("operator"):
            self.operator(place, cursor, list(cursor.get_arguments()))
        elif kind == K.UNARY_OPERATOR:
            self.unary(place, cursor, children)
        elif kind in (K.IF_STMT, K.WHILE_STMT, K.CONDITIONAL_OPERATOR):
            condition = children[0]
            if condition.kind.is_expression():
                self.add(place, condition, "(trelMutant(%d) != static_cast<bool>(", "))", "negated")
        elif kind in (K.INTEGER_LITERAL, K.FLOATING_LITERAL):
            self.add(place, cursor, "((trelMutant(%d) ? 1 : 0) + ", ")", "one more")
        elif kind == K.CXX_BOOL_LITERAL_EXPR:
            self.add(place, cursor, "(trelMutant(%d) != ", ")", "the other")
        elif kind == K.RETURN_STMT and children:
            self.returned(place, cursor, children[0], result)
        for body in bodies(kind, children):
            self.statement(place, body, kind, result)

    def operator(self, place, cursor, operands):
        if len(operands) != 2:
            return
        source = self.source(place[0])
        left, right = operands
        sign = source[left.extent.end.offset:right.extent.start.offset].decode().strip()
        for other in RELATIONAL.get(sign, ()):
            raw = [source[o.extent.start.offset:o.extent.end.offset].decode() for o in operands]
            self.add(place, cursor, f"(trelMutant(%d) ? ({escape(raw[0])} {other} {escape(raw[1])}) : (",
                     "))", f"{sign} becomes {other}")

    def unary(self, place, cursor, children):
        source = self.source(place[0])
        raw = source[cursor.extent.start.offset:cursor.extent.end.offset].decode()
        operand = source[children[0].extent.start.offset:children[0].extent.end.offset].decode()
        if raw.startswith("!") and not raw.startswith("!="):
            self.add(place, cursor, f"(trelMutant(%d) ? static_cast<bool>({escape(operand)}) : (", "))",
                     "! removed")
        elif raw[:2] in ("++", "--"):
            other = "--" if raw[:2] == "++" else "++"
            self.add(place, cursor, f"(trelMutant(%d) ? {other}{escape(operand)} : ", ")",
                     f"{raw[:2]} becomes {other}")

    def returned(self, place, cursor, value, result):
        if result is None:
            return
        if result.kind == T.BOOL:
            self.add(place, value, "(trelMutant(%d) != static_cast<bool>(", "))", "returns the other")
        elif result.kind in INTEGERS:
            self.add(place, value, "((trelMutant(%d) ? 1 : 0) + (", "))", "returns one more")
        elif result.kind in (T.POINTER, T.RECORD, T.ELABORATED, T.UNEXPOSED, T.ENUM):
            raw = self.source(place[0])[value.extent.start.offset:value.extent.end.offset]
            if raw not in (b"{}", b"nullptr", b'""'):  # which it returns as it is
                self.add(place, cursor, "if (trelMutant(%d)) return {}; else ", "", "returns {}")

    def statement(self, place, cursor, parent, result):
        kind = cursor.kind
        if not self.source(place[0])[cursor.extent.end.offset:].lstrip().startswith(b";"):
            return
        # Where something must be returned or thrown, the compiler takes it that it is.
        conditional = parent in (K.IF_STMT, K.SWITCH_STMT)
        plain = result is not None and result.kind == T.VOID
        throws = self.source(place[0])[cursor.extent.start.offset:].startswith(b"throw")
        removable = (kind.is_expression() and (conditional or not throws)) \
            or kind in (K.CONTINUE_STMT, K.BREAK_STMT) \
            or (kind == K.RETURN_STMT and (conditional or plain))
        if removable:
            self.add(place, cursor, "if (trelMutant(%d)) {} else ", "", "removed")

    def add(self, place, cursor, before, behind, what):
        path, function = place
        extent = cursor.extent
        if extent.start.file is None or not extent.start.file.name.endswith(path):
            return
        start, end = extent.start.offset, extent.end.offset
        text = " ".join(self.source(path)[start:end].decode().split())
        self.found[path, start, end, what] = Mutant(
            path, start, end, before, behind, what, extent.start.line, function, text,
            extent.end.line - extent.start.line + 1)

    def source(self, path):
        if path not in self.sources:
            self.sources[path] = (self.root / path).read_bytes()
        return self.sources[path]


def escape(text):
    return " ".join(text.split()).replace("%", "%%")


def qualified(cursor):
    parent = cursor.semantic_parent
    named = parent is not None and parent.kind in (K.CLASS_DECL, K.STRUCT_DECL, K.CLASS_TEMPLATE)
    return f"{parent.spelling}::{cursor.spelling}" if named else cursor.spelling


def is_constexpr(cursor):
    if cursor.kind != K.VAR_DECL and cursor.kind not in FUNCTIONS:
        return False
    tokens = cursor.get_tokens()
    return any(t.spelling == "constexpr" for t, _ in zip(tokens, range(4)))


def bodies(kind, children):
    """The children of a node that are statements of their own."""
    if kind == K.COMPOUND_STMT:
        return children
    if kind in (K.IF_STMT, K.WHILE_STMT, K.FOR_STMT, K.CXX_FOR_RANGE_STMT):
        last = children[1:] if kind == K.IF_STMT else children[-1:]
        return [c for c in last if c.kind != K.COMPOUND_STMT]
    return []


def sample(mutants, seed):
    """All, in an order that is the same for one seed, and with numbers: both
    change as little as can be when the library changes."""
    def digest(m):
        return hashlib.sha256(f"{seed} {m.key}".encode()).digest()

    ordered, taken = sorted(mutants, key=digest), set()
    for m in ordered:
        m.number = int.from_bytes(digest(m)[-2:], "big")
        while m.number in taken:
            m.number = (m.number + 1) % MOST
        taken.add(m.number)
    return ordered


def planted(source, mutants):
    """The text of a file with its mutants."""
    marks = []
    for order, m in enumerate(mutants):
        # At one place statements open before expressions, and what opens first
        # closes last.
        marks.append((m.start, 1, -m.end, bool(m.behind), order, m.before % m.number))
        marks.append((m.end, 0, -m.start, False, -order, m.behind))
    text, at = [], 0
    for offset, _, _, _, _, mark in sorted(marks):
        text += [source[at:offset].decode(), mark]
        at = offset
    text.append(source[at:].decode())
    return '#include "smartcomp/Mutant.h"\n' + "".join(text)
