"""Finds what can be changed in a C++ file, by the syntax tree of the compiler's own front end."""

import re
import sys

import operators
from mutants import Change

# Debian's bindings, which are pure Python; interpreters other than Debian's do not look there.
sys.path.append("/usr/lib/python3/dist-packages")
from clang.cindex import CursorKind as Kind, Index, TokenKind, TranslationUnit, TypeKind

EXPRESSION_STATEMENTS = {
    Kind.CALL_EXPR, Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR, Kind.UNARY_OPERATOR, Kind.UNEXPOSED_EXPR,
    Kind.CXX_DELETE_EXPR, Kind.BREAK_STMT, Kind.CONTINUE_STMT, Kind.RETURN_STMT, Kind.FOR_STMT, Kind.WHILE_STMT,
    Kind.CXX_FOR_RANGE_STMT,
}
SCALARS = {
    TypeKind.POINTER, TypeKind.ENUM, TypeKind.BOOL, TypeKind.CHAR_S, TypeKind.SHORT, TypeKind.USHORT, TypeKind.INT,
    TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG,
}
UNSIGNED = {TypeKind.BOOL, TypeKind.USHORT, TypeKind.UINT, TypeKind.ULONG, TypeKind.ULONGLONG}


class Walker:
    """Collects the changes of one file."""

    def __init__(self, path, source):
        self.path = str(path)
        self.source = source
        self.changes = []

    # --- positions -----------------------------------------------------------------------------------------------

    def span(self, cursor):
        return cursor.extent.start.offset, cursor.extent.end.offset

    def text(self, cursor):
        start, end = self.span(cursor)
        return self.source[start:end].decode()

    def replace(self, start, end, text, operator):
        if 0 <= start <= end <= len(self.source):
            self.changes.append(Change(start, end, text, operator))

    def replace_cursor(self, cursor, text, operator):
        self.replace(*self.span(cursor), text, operator)

    def is_here(self, cursor):
        location = cursor.location
        return location.file is not None and location.file.name == self.path

    # --- the tree ------------------------------------------------------------------------------------------------

    def walk(self, cursor, parent=None):
        """Visits everything below a cursor that stands in the file."""
        for child in cursor.get_children():
            if cursor.kind == Kind.TRANSLATION_UNIT and not self.is_here(child):
                continue
            self.visit(child, cursor)
            self.walk(child, cursor)

    def visit(self, cursor, parent):
        visit = getattr(self, f"visit_{cursor.kind.name.lower()}", None)
        if visit is not None:
            visit(cursor)
        if parent.kind in (Kind.COMPOUND_STMT, Kind.CASE_STMT, Kind.DEFAULT_STMT):
            self.visit_statement(cursor, parent)

    def visit_statement(self, cursor, parent):
        if cursor.kind not in EXPRESSION_STATEMENTS:
            return
        if cursor.kind == Kind.RETURN_STMT and list(cursor.get_children()):
            return
        if parent.kind == Kind.CASE_STMT and list(parent.get_children())[-1] != cursor:
            return  # the label's value
        loop = cursor.kind in (Kind.FOR_STMT, Kind.WHILE_STMT, Kind.CXX_FOR_RANGE_STMT)
        self.replace_cursor(cursor, "{}" if loop else "(void)0", "statement")

    # --- operators -----------------------------------------------------------------------------------------------

    def between(self, left, right):
        """Start, end and text of the operator between two operands."""
        start, end = self.span(left)[1], self.span(right)[0]
        gap = self.source[start:end].decode() if start < end else ""
        text = gap.strip()
        start += len(gap) - len(gap.lstrip())
        return start, start + len(text), text

    def visit_binary_operator(self, cursor):
        operands = list(cursor.get_children())
        if len(operands) == 2:
            start, end, text = self.between(*operands)
            unsigned_zero = self.text(operands[1]) == "0" and operands[0].type.get_canonical().kind in UNSIGNED
            for operator, other in operators.binary(text):
                if not (unsigned_zero and (text, other) in operators.SAME_FOR_UNSIGNED_ZERO):
                    self.replace(start, end, other, operator)

    visit_compound_assignment_operator = visit_binary_operator

    def visit_overloaded(self, cursor, name):
        operands = self.arguments(cursor)
        if len(operands) != 2:
            return
        start, end, text = self.between(*operands)
        if text != name:
            return
        if name in ("<<", "+"):
            self.replace(self.span(operands[0])[1], self.span(operands[1])[1], "", "operand")
        else:
            for operator, other in operators.binary(name):
                self.replace(start, end, other, operator)

    def visit_unary_operator(self, cursor):
        start, end = self.span(cursor)
        operand = next(iter(cursor.get_children()), None)
        if operand is None:
            return
        inner = self.span(operand)
        prefix = start < inner[0]
        place = (start, inner[0]) if prefix else (inner[1], end)
        text = self.source[place[0]:place[1]].decode().strip()
        for operator, other in operators.unary(text):
            self.replace(place[0], place[0] + len(text), other, operator)

    # --- conditions and branches ---------------------------------------------------------------------------------

    def negate(self, cursor):
        """Negates a condition, unless another operator does that already: != for ==, or the ! left out."""
        while cursor.kind in (Kind.UNEXPOSED_EXPR, Kind.PAREN_EXPR) and len(list(cursor.get_children())) == 1:
            inner = next(iter(cursor.get_children()))
            if self.span(inner) != self.span(cursor):
                break
            cursor = inner
        operands = list(cursor.get_children())
        if cursor.kind == Kind.CALL_EXPR and cursor.spelling in ("operator==", "operator!="):
            return
        if cursor.kind == Kind.BINARY_OPERATOR and self.between(*operands)[2] in ("==", "!="):
            return
        if cursor.kind == Kind.UNARY_OPERATOR and self.text(cursor).startswith("!"):
            return
        self.replace_cursor(cursor, operators.negated(self.text(cursor)), "condition")

    def visit_if_stmt(self, cursor):
        parts = list(cursor.get_children())
        if len(parts) < 2:
            return
        branches = [part for part in parts if part.kind in (Kind.COMPOUND_STMT, Kind.IF_STMT)]
        condition = parts[parts.index(branches[0]) - 1]
        self.negate(condition)
        if len(branches) == 2:
            self.replace(self.span(branches[0])[1], self.span(branches[1])[1], "", "else")

    def visit_while_stmt(self, cursor):
        self.negate(next(iter(cursor.get_children())))

    def visit_conditional_operator(self, cursor):
        self.negate(next(iter(cursor.get_children())))

    def visit_case_stmt(self, cursor):
        label, statement = list(cursor.get_children())[0], list(cursor.get_children())[-1]
        start = self.span(cursor)[0]
        colon = self.source.index(b":", self.span(label)[1], self.span(statement)[0])
        self.replace(start, colon + 1, "", "case")

    # --- values --------------------------------------------------------------------------------------------------

    def visit_integer_literal(self, cursor):
        for other in operators.integer(self.text(cursor)):
            self.replace_cursor(cursor, other, "constant")

    def visit_string_literal(self, cursor):
        for other in operators.string(self.text(cursor)):
            self.replace_cursor(cursor, other, "text")

    def visit_character_literal(self, cursor):
        for other in operators.character(self.text(cursor)):
            self.replace_cursor(cursor, other, "text")

    def visit_cxx_bool_literal_expr(self, cursor):
        text = self.text(cursor)
        if text in ("true", "false"):
            self.replace_cursor(cursor, "false" if text == "true" else "true", "bool")

    def visit_decl_ref_expr(self, cursor):
        declared = cursor.referenced
        if declared is None or declared.kind != Kind.ENUM_CONSTANT_DECL:
            return
        text = self.text(cursor)
        if not text.endswith(declared.spelling):
            return
        names = [child.spelling for child in declared.semantic_parent.get_children()
                 if child.kind == Kind.ENUM_CONSTANT_DECL]
        for other in operators.neighbours(names, declared.spelling):
            self.replace_cursor(cursor, text[:len(text) - len(declared.spelling)] + other, "enumerator")

    def visit_return_stmt(self, cursor):
        for value in cursor.get_children():
            text = self.text(value)
            if value.type.get_canonical().kind == TypeKind.BOOL:
                self.negate(value)
            elif text not in operators.EMPTY and not operators.is_literal(text):
                self.replace_cursor(value, "{}", "return")

    def visit_var_decl(self, cursor):
        values = [child for child in cursor.get_children() if child.kind.is_expression()]
        if not values or " = " not in self.text(cursor) or cursor.type.get_canonical().kind not in SCALARS:
            return
        value = values[-1]
        if cursor.type.get_canonical().kind == TypeKind.BOOL:
            self.negate(value)
        elif self.text(value) not in operators.EMPTY and not operators.is_literal(self.text(value)):
            self.replace_cursor(value, "{}", "initial")

    def visit_constructor(self, cursor):
        children = list(cursor.get_children())
        for member, value in zip(children, children[1:]):
            if member.kind == Kind.MEMBER_REF and value.kind.is_expression() and value.kind != Kind.INIT_LIST_EXPR:
                begin, end = self.span(member)[1], self.span(value)[1]
                if self.source[begin:begin + 1] == b"(" and self.source[end:end + 1] == b")":
                    self.replace(begin + 1, end, "", "initial")

    # --- calls ---------------------------------------------------------------------------------------------------

    def arguments(self, cursor):
        """A call's arguments that are written there; default ones stand elsewhere or nowhere."""
        start, end = self.span(cursor)
        found = []
        for argument in cursor.get_arguments():
            if argument is None or not self.is_here(argument):
                continue
            first, last = self.span(argument)
            if start <= first < last <= end and (first, last) != (start, end):
                found.append(argument)
        return found

    def swap(self, left, right):
        (start, middle), (begin, end) = left, right
        first, second = self.source[start:middle].decode(), self.source[begin:end].decode()
        if middle <= begin and first != second:
            self.replace(start, end, second + self.source[middle:begin].decode() + first, "arguments")

    def visit_call_expr(self, cursor):
        match = re.fullmatch(r"operator\s*(==|!=|<=|>=|<<|<|>|\+)", cursor.spelling)
        if match:
            self.visit_overloaded(cursor, match[1])
            return
        if cursor.spelling.startswith("operator"):
            return
        spans = [self.span(argument) for argument in self.arguments(cursor)]
        for left, right in zip(spans, spans[1:]):
            self.swap(left, right)

    def visit_init_list_expr(self, cursor):
        spans = []
        for member in cursor.get_children():
            start, end = self.span(member)
            name = re.match(rb"\.\w+\s*=\s*", self.source[start:end])
            spans.append((start + (name.end() if name else 0), end))
        for left, right in zip(spans, spans[1:]):
            if left[0] < left[1] and right[0] < right[1]:
                self.swap(left, right)

    def visit_cxx_static_cast_expr(self, cursor):
        operand = list(cursor.get_children())[-1]
        self.replace_cursor(cursor, f"({self.text(operand)})", "cast")


def find_names(unit, path):
    """Changes of the named results and powers, which are macros and so no part of the tree."""
    found = []
    directive_line = 0
    for token in unit.cursor.get_tokens():
        if token.spelling == "#":
            directive_line = token.location.line
        if token.kind != TokenKind.IDENTIFIER or token.location.line == directive_line:
            continue
        for other in operators.NAMES.get(token.spelling, ()):
            found.append(Change(token.extent.start.offset, token.extent.end.offset, other, "constant"))
    return found


def find_changes(path, source, arguments):
    """
    All changes of a file.
    @param arguments options of the compiler: include folders, definitions and the standard
    """
    unit = Index.create().parse(str(path), args=["-x", "c++", *arguments],
                                options=TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
    errors = [str(message) for message in unit.diagnostics if message.severity >= message.Error]
    if errors:
        raise RuntimeError(f"{path} cannot be read: {errors[0]}")
    walker = Walker(path, source)
    walker.walk(unit.cursor)
    return walker.changes + find_names(unit, path)
