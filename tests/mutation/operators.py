"""
The mutation operators. Each takes the text of a construct and returns what may come in its place; walk.py finds the
constructs.
"""

import re

#: What each operator does, for --help and for who reads a table.
OPERATORS = {
    "relational": "a comparison becomes its neighbours: < to <= and >, == to != and the ordered ones",
    "arithmetic": "+ - * / % become one another, also in compound assignments",
    "constant": "a number becomes one more, one less, zero and negative; a named result or power becomes another",
    "enumerator": "an enumerator becomes the one before and the one after it",
    "condition": "a condition, or a truth value that is returned or kept, is negated",
    "logical": "&& and || become each other; ! is left out",
    "statement": "a call, assignment, loop, break or return without value is left out",
    "return": "a value that is returned becomes the empty one",
    "initial": "a value that a variable or member begins with becomes the empty one",
    "increment": "++ and -- become each other",
    "sign": "a minus in front is left out",
    "arguments": "two neighbouring arguments or members of a list change places",
    "else": "an else branch is left out",
    "case": "a case label is left out",
    "text": "a string or character becomes another one, a string an empty one",
    "bool": "true and false become each other",
    "bits": "& | ^ << >> become another one; ~ is left out",
    "cast": "a cast is left out",
    "operand": "an operand of a stream or of a joined string is left out",
}

RELATIONAL = {
    "<": ("<=", ">"),
    "<=": ("<", ">="),
    ">": (">=", "<"),
    ">=": (">", "<="),
    "==": ("!=", "<=", ">="),
    "!=": ("==", "<", ">"),
}
#: What says the same of a number without sign and of zero.
SAME_FOR_UNSIGNED_ZERO = {("!=", ">"), ("==", "<=")}
ARITHMETIC = {"+": ("-",), "-": ("+",), "*": ("/", "+"), "/": ("*", "-"), "%": ("/",)}
LOGICAL = {"&&": "||", "||": "&&"}
BITS = {"&": ("|",), "|": ("&",), "^": ("&",), "<<": (">>",), ">>": ("<<",)}
NAMES = {
    "EAF_OK": ("EAF_FAILED",),
    "EAF_FAILED": ("EAF_OK", "EAF_NULL_POINTER"),
    "EAF_NULL_POINTER": ("EAF_OK", "EAF_FAILED"),
    "OPC_POWER_UNKNOWN": ("OPC_POWER_OFF", "0"),
    "OPC_POWER_OFF": ("OPC_POWER_UNKNOWN", "0"),
}
EMPTY = {"0", "false", "nullptr", "EAF_OK", "{}", ""}

INTEGER = re.compile(r"(0[xX][0-9A-Fa-f']+|[0-9][0-9']*)([uUlLzZ]*)")
STRING = re.compile(r'(?:u8|[uUL])?"', re.DOTALL)


def is_literal(text):
    """Whether a text is a number or a string, for which there are operators of their own."""
    return bool(INTEGER.fullmatch(text) or STRING.match(text))


def binary(operator):
    """(name of the mutation operator, replacement) for each way to change a binary operator."""
    if operator in RELATIONAL:
        return [("relational", other) for other in RELATIONAL[operator]]
    if operator in LOGICAL:
        return [("logical", LOGICAL[operator])]
    stem = operator.removesuffix("=")
    tail = operator[len(stem):]
    if stem in ARITHMETIC:
        return [("arithmetic", other + tail) for other in ARITHMETIC[stem]]
    if stem in BITS:
        return [("bits", other + tail) for other in BITS[stem]]
    return []


def unary(operator):
    """(name of the mutation operator, replacement) for each way to change a unary operator."""
    return {
        "++": [("increment", "--")],
        "--": [("increment", "++")],
        "-": [("sign", "")],
        "!": [("logical", "")],
        "~": [("bits", "")],
    }.get(operator, [])


def integer(text):
    """Other numbers for an integer literal, in its base ten and with its suffix; none for what is none."""
    match = INTEGER.fullmatch(text)
    if not match:
        return []
    digits, suffix = match[1].replace("'", ""), match[2]
    octal = len(digits) > 1 and digits[0] == "0" and digits[1] not in "xX"
    value = int(digits, 8 if octal else 0)
    others = [value + 1, value - 1, 0, -value]
    if "u" in suffix.lower():
        others = [other for other in others if other >= 0]
    found = []
    for other in others:
        text = f"{other}{suffix}" if other >= 0 else f"({other}{suffix})"
        if other != value and text not in found:
            found.append(text)
    return found


def string(text):
    """Other texts for a string literal, which may be several in a row: a changed one and an empty one."""
    match = STRING.match(text)
    if not match:
        return []
    return [text[:match.end()] + "?" + text[match.end():], '""'] if text != '""' else ['"?"']


def character(text):
    """Another character for a character literal."""
    return ["'?'" if text != "'?'" else "'!'"]


def neighbours(names, name):
    """The enumerators before and after one, as far as there are any."""
    position = names.index(name)
    return names[max(position - 1, 0):position] + names[position + 1:position + 2]


def negated(text):
    """A condition's opposite."""
    return f"!({text})"
