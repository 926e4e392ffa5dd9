"""Finds the places of C++ sources where a small change makes a mutant.

The places come from Clang's syntax tree, so that each is an exact range of bytes. Comments,
strings, static_assert, tables of constants, bounds of arrays and template arguments are none.
"""

import hashlib
import re
from dataclasses import dataclass

from clang.cindex import CursorKind, Index, TokenGroup, TranslationUnitLoadError

FUNCTIONS = {
    CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR,
    CursorKind.DESTRUCTOR, CursorKind.CONVERSION_FUNCTION, CursorKind.FUNCTION_TEMPLATE,
}
RECORDS = {
    CursorKind.STRUCT_DECL, CursorKind.CLASS_DECL, CursorKind.CLASS_TEMPLATE,
    CursorKind.CLASS_TEMPLATE_PARTIAL_SPECIALIZATION,
}
VARIABLES = {CursorKind.VAR_DECL, CursorKind.FIELD_DECL, CursorKind.PARM_DECL}
LOOPS = {CursorKind.FOR_STMT, CursorKind.CXX_FOR_RANGE_STMT, CursorKind.WHILE_STMT}
# Not looked into: what is decided while compiling.
DARK = {CursorKind.STATIC_ASSERT, CursorKind.ALIGNED_ATTR, CursorKind.TYPE_ALIAS_DECL}
# Enumerations whose values tell how something went.
STATUS_NAME = re.compile(r'(Status|Result)$')
OTHER_OPERATOR = {'<': '<=', '<=': '<', '>': '>=', '>=': '>',
                  '+': '-', '-': '+', '+=': '-=', '-=': '+='}
LITERAL = re.compile(rb"(0[xX][0-9a-fA-F]+|0|[1-9][0-9]*)([uUlLzZ]*)$")


@dataclass(frozen=True)
class Mutant:
    """One change: the bytes [start, end) of a file become `text`."""
    file: str
    line: int
    function: str
    kind: str
    start: int
    end: int
    text: str
    before: str  # the lines that change, with single blanks
    after: str
    nth: int     # among the mutants that are the same but for their place

    @property
    def name(self):
        """Stays the same as long as the line and its function do."""
        parts = (self.file, self.function, self.kind, self.before, self.after, str(self.nth))
        return '|'.join(parts)


@dataclass
class Place:
    line: int
    function: str
    kind: str
    start: int
    end: int
    texts: list


def squeeze(data):
    return ' '.join(data.decode('utf-8', 'replace').split())


class _Finder:
    """Collects the places of the files that `wanted` takes, in one translation unit."""

    def __init__(self, unit, wanted):
        self.unit = unit
        self.wanted = wanted
        self.places = {}  # file -> (start, end, kind) -> Place
        self.data = {}

    def run(self):
        for cursor in self.unit.cursor.get_children():
            if self.file_of(cursor) is not None:
                self.visit(cursor, '', False)

    def file_of(self, cursor):
        file = cursor.location.file
        return self.wanted(file.name) if file is not None else None

    def bytes_of(self, cursor):
        """The file that a cursor is in; nothing of what comes from a macro of the compiler or of its
        command line."""
        if cursor.extent.start.file is None:
            return b''
        name = cursor.extent.start.file.name
        if name not in self.data:
            with open(name, 'rb') as source:
                self.data[name] = source.read()
        return self.data[name]

    def text(self, cursor):
        return self.bytes_of(cursor)[cursor.extent.start.offset:cursor.extent.end.offset]

    def add(self, cursor, function, kind, texts, start=None, end=None):
        file = self.file_of(cursor)
        if file is None or not function and kind not in ('literal', 'boolean'):
            return
        start = cursor.extent.start.offset if start is None else start
        end = cursor.extent.end.offset if end is None else end
        if end <= start:
            return
        line = self.bytes_of(cursor).count(b'\n', 0, start) + 1
        self.places.setdefault(file, {})[(start, end, kind)] = Place(
            line, function, kind, start, end, texts)

    # Walking.

    def visit(self, cursor, function, constant):
        """`constant`: inside a variable whose lists of values are a table."""
        kind = cursor.kind
        if kind in DARK or constant and kind == CursorKind.INIT_LIST_EXPR:
            return
        if kind in FUNCTIONS:
            function = self.function_name(cursor)
            constant = False
        elif kind == CursorKind.LAMBDA_EXPR:
            constant = False
        elif kind == CursorKind.VAR_DECL:
            constant = self.is_constant(cursor)
        children = list(cursor.get_children())
        self.look_at(cursor, children, function)
        for child in children:
            if kind not in VARIABLES or not self.is_of_type(cursor, child):
                self.visit(child, function, constant)

    @staticmethod
    def function_name(cursor):
        names = [cursor.spelling]
        parent = cursor.semantic_parent
        while parent is not None and parent.kind in RECORDS:
            names.insert(0, parent.spelling)
            parent = parent.semantic_parent
        return '::'.join(names)

    def is_constant(self, cursor):
        outside = cursor.semantic_parent is None or cursor.semantic_parent.kind not in FUNCTIONS
        start = self.text(cursor).split(b'=')[0]
        return outside or re.search(rb'\b(constexpr|static)\b', start) is not None

    def is_of_type(self, variable, child):
        """Whether an expression is part of the type: a template argument or a bound."""
        start = child.extent.start.offset
        return child.kind.is_expression() and (
            start < variable.location.offset
            or self.bytes_of(child)[:start].rstrip().endswith(b'['))

    def look_at(self, cursor, children, function):
        kind = cursor.kind
        if kind == CursorKind.COMPOUND_STMT:
            for child in children:
                self.statement(child, function)
        elif kind in (CursorKind.CASE_STMT, CursorKind.DEFAULT_STMT) and children:
            self.statement(children[-1], function)
        elif kind == CursorKind.IF_STMT:
            self.branch(cursor, children, function)
        elif kind in LOOPS and children:
            self.statement(children[-1], function)
            if kind == CursorKind.WHILE_STMT and children[0].kind.is_expression():
                self.condition(children[0], function)
            elif kind == CursorKind.FOR_STMT:
                self.for_condition(cursor, children[:-1], function)
        elif kind == CursorKind.DO_STMT and len(children) == 2:
            self.condition(children[1], function)
        elif kind == CursorKind.CONDITIONAL_OPERATOR and len(children) == 3:
            self.condition(children[0], function)
        elif kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.binary(cursor, children, function)
        elif kind == CursorKind.INTEGER_LITERAL:
            self.literal(cursor, function)
        elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            text = self.text(cursor)
            if text in (b'true', b'false'):
                self.add(cursor, function, 'boolean', ['false' if text == b'true' else 'true'])
        elif kind == CursorKind.DECL_REF_EXPR:
            self.status(cursor, function)

    # One method a kind of change.

    def branch(self, cursor, children, function):
        if self.text(cursor).replace(b' ', b'').startswith(b'ifconstexpr'):
            bodies = children[1:]
        else:
            kinds = (CursorKind.DECL_STMT, CursorKind.VAR_DECL)
            declares = [c for c in children if c.kind in kinds]
            children = children[len(declares):]
            if not any(c.kind == CursorKind.VAR_DECL for c in declares):
                self.condition(children[0], function)
            bodies = children[1:]
        for body in bodies:
            self.statement(body, function)

    def for_condition(self, cursor, children, function):
        """The child between the two semicolons of the head, if there is one."""
        depth, semicolons = 0, []
        for token in TokenGroup.get_tokens(self.unit, cursor.extent):
            if token.spelling in '([{':
                depth += 1
            elif token.spelling in ')]}':
                depth -= 1
                if depth == 0:
                    break
            elif token.spelling == ';' and depth == 1:
                semicolons.append(token.extent.start.offset)
        if len(semicolons) != 2:
            return
        for child in children:
            if semicolons[0] < child.extent.start.offset < semicolons[1]:
                self.condition(child, function)

    def condition(self, cursor, function):
        text = self.text(cursor).decode()
        if text not in ('true', 'false'):
            self.add(cursor, function, 'condition', ['!(' + text + ')'])

    def statement(self, cursor, function):
        kind = cursor.kind
        is_jump = kind in (CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT)
        is_return = kind == CursorKind.RETURN_STMT and not list(cursor.get_children())
        is_expression = kind.is_expression() and kind != CursorKind.CSTYLE_CAST_EXPR
        if not (is_expression or is_jump or is_return):
            return
        after = self.bytes_of(cursor)[cursor.extent.end.offset:].lstrip()
        if after.startswith(b';'):
            self.add(cursor, function, 'statement', [''])

    def binary(self, cursor, children, function):
        if len(children) != 2:
            return
        left, right = children[0].extent.end.offset, children[1].extent.start.offset
        between = self.bytes_of(cursor)[left:right]
        operator = between.strip().decode()
        if operator in ('&&', '||'):
            for child in children:
                self.condition(child, function)
        elif operator in OTHER_OPERATOR:
            start = left + between.index(operator.encode())
            kind = 'sign' if operator[0] in '+-' else 'comparison'
            self.add(cursor, function, kind, [OTHER_OPERATOR[operator]],
                     start, start + len(operator))

    def literal(self, cursor, function):
        match = LITERAL.match(self.text(cursor))
        if match is None:
            return
        digits, suffix = match.group(1).decode(), match.group(2).decode()
        value = int(digits, 0)
        write = hex if digits[:2] in ('0x', '0X') else str
        texts = [write(value + 1) + suffix]
        texts.append(write(value - 1) + suffix if value != 0 else '-1')
        self.add(cursor, function, 'literal', texts)

    def status(self, cursor, function):
        target = cursor.referenced
        if target is None or target.kind != CursorKind.ENUM_CONSTANT_DECL:
            return
        parent = target.semantic_parent
        name = cursor.spelling.encode()
        if not STATUS_NAME.search(parent.spelling) or not self.text(cursor).endswith(name):
            return
        others = [c.spelling for c in parent.get_children()
                  if c.kind == CursorKind.ENUM_CONSTANT_DECL and c.spelling != cursor.spelling]
        end = cursor.extent.end.offset
        if others:
            self.add(cursor, function, 'status', others, end - len(name), end)


def find_places(source, arguments, wanted):
    """The places of a translation unit: file -> (start, end, kind) -> Place. `wanted` gives the
    name under which a file's places are kept, or None."""
    try:
        unit = Index.create().parse(source, args=arguments)
    except TranslationUnitLoadError as error:
        raise SystemExit(f'{source}: {error}') from error
    errors = [d for d in unit.diagnostics if d.severity >= 3]
    if errors:
        raise SystemExit(f'{source}: {errors[0]}')
    finder = _Finder(unit, wanted)
    finder.run()
    return finder.places


def _draw(seed, *parts):
    digest = hashlib.sha256('|'.join((str(seed),) + parts).encode()).digest()
    return int.from_bytes(digest[:8], 'big')


def mutants_of(file, data, places, seed):
    """One mutant for each place; the seed picks one of the changes that a place offers."""
    mutants, seen = [], {}
    for place in sorted(places, key=lambda p: (p.start, p.end, p.kind)):
        first = data.rfind(b'\n', 0, place.start) + 1
        last = data.find(b'\n', place.end)
        last = len(data) if last < 0 else last
        before = squeeze(data[first:last])
        column = str(place.start - first)
        head = '|'.join((file, place.function, place.kind, before, column))
        text = place.texts[_draw(seed, 'text', head) % len(place.texts)]
        after = squeeze(data[first:place.start] + text.encode() + data[place.end:last])
        key = (place.function, place.kind, before, after)
        seen[key] = seen.get(key, -1) + 1
        mutants.append(Mutant(file, place.line, place.function, place.kind, place.start, place.end,
                              text, before, after, seen[key]))
    return mutants


def in_random_order(mutants, seed):
    """Each mutant's own name decides on its place in the order, so that a change of some lines
    leaves the sample of the others as it is."""
    return sorted(mutants, key=lambda mutant: _draw(seed, 'order', mutant.name))
