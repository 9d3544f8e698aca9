// The rules of the argument parser a second time, slow and plain, as Python code.
#ifndef TESTS_FUZZ_GETARGS_REFERENCE_H
#define TESTS_FUZZ_GETARGS_REFERENCE_H

// parse(args, keywords, format, names) answers (success, error, {slot: (form, text)}). A slot is one
// pointer behind the names. Behind a '*' an error has words of the interpreter.
constexpr const char* kReference = R"python(
class Refused(Exception):
    def __init__(self, words): self.words, self.levels = words, []

class Raised(Exception):
    def __init__(self, text): self.text = text

def type_name(type):
    own = type.__module__ in ('builtins', '__main__')
    return type.__name__ if own else type.__module__ + '.' + type.__name__

def name_of(object): return 'None' if object is None else type_name(type(object))[:50]

def raised(error): return Raised('%s: %s' % (type_name(type(error)), error))

def refuse(arg, *expected):
    raise Refused('must be %s, not %s' % (' or '.join(e[:50] for e in expected), name_of(arg)))

IDENTIFIERS = {
    'Vector': 'vec<3,float64>', 'Vector4d': 'vec<4,float64>', 'Vector4d32': 'vec<4,float32>',
    'Color': 'col<3,float64>', 'ColorA': 'col<4,float64>[A]', 'ColorA32': 'col<4,float32>[A]',
}
RANGES = {
    'b': (0, 255, 'unsigned byte integer'), 'h': (-2**15, 2**15 - 1, 'signed short integer'),
    'i': (-2**31, 2**31 - 1, 'signed integer'), 'j': (0, 2**16 - 1, 'unsigned short integer'),
}
TOO_LARGE = 'OverflowError: Python int too large to convert to C long'
BAD = 'impossible<bad format char>'

class Parse:
    def __init__(self, format):
        self.format, self.at, self.slot, self.waiting, self.written = format, 0, 0, None, {}

    def next(self): return self.format[self.at:self.at + 1]
    def ended(self): return self.next() in ('', ':', ';')
    def consume(self, characters):
        found = self.next() != '' and self.next() in characters
        self.at += found
        return found
    def store(self, form, value):
        self.written[self.slot] = (form, str(value))
        self.slot += 1

    # A value with a type of its own: its number, or None.
    def value(self, arg, kind):
        if type(arg) is not Value or arg.kind != kind: return None
        if arg.dead: raise Raised("ReferenceError: the object 'Value' is not alive")
        return arg.number
    def numbers(self, arg, kind, count, form, expected):
        number = self.value(arg, kind)
        if number is None: refuse(arg, expected)
        self.store(form, ' '.join(str(number + i) for i in range(count)))

    def integer(self, arg):
        if isinstance(arg, int): return int.__add__(arg, 0)
        if not hasattr(type(arg), '__int__'):
            raise Raised('TypeError: an integer is required (got type %s)' % type_name(type(arg)))
        try: result = type(arg).__int__(arg)
        except Exception as error: raise raised(error)
        if not isinstance(result, int):
            raise Raised('TypeError: __int__ returned non-int (type %s)' % type_name(type(result)))
        return int.__add__(result, 0)

    # Minus one counts as a failure where an exception waits.
    def unless_waiting(self, failed):
        if failed and self.waiting: raise Raised(self.waiting)

    def text(self, start, text):
        try: text.encode('utf-8')
        except UnicodeEncodeError as error:
            self.waiting, self.at = raised(error).text, start
            return None
        return text

    def checked(self, letter, arg, optional):
        wanted = TYPES[letter]
        none = self.consume('N')
        self.slot += 1
        if wanted in type(arg).__mro__:
            if letter == 'O': return self.store('O', repr(arg))
            if not HOSTS[id(arg)]:
                raise Raised("ReferenceError: the object '%s' is not alive" % type_name(type(arg)))
            return self.store(letter + '!', HOSTS[id(arg)])
        self.slot += 1
        if arg is None and (optional or none): return
        refuse(arg, type_name(wanted), *(['None'] if none and not optional else []))

    def simple(self, arg, optional):
        start = self.at
        c = self.next()
        self.at += 1
        if c == '#':
            if isinstance(arg, int):
                number = self.integer(arg)
                if -2**63 <= number < 2**31: return self.store(c, '%d/0' % ((number + 2**31) % 2**32 - 2**31))
                self.waiting = TOO_LARGE
                return self.store(c, '-1/0')
            try: number = self.value(arg, 'Gadget')
            except Raised as error:
                self.waiting = error.text
                number = 0
            if number is None: refuse(arg, 'qlx.gui.QLXGadget', 'int')
            self.store(c, '-1/%d' % number)
        elif c == '$':
            if not isinstance(arg, str):
                try: arg = str(arg)
                except Exception as error: raise raised(error)
            text = self.text(start, arg)
            if text is not None: self.store(c, "'%s'" % str.__str__(text) if text else '-')
        elif c == '%':
            if isinstance(arg, str):
                text = self.text(start, arg)
                if text is not None and str.find(text, '\0') >= 0: raise Raised('ValueError: embedded null byte')
                if text is not None: self.store(c, "'path %s'" % text if text else '-')
                return
            for kind in ('MemoryFile', 'Url'):
                number = self.value(arg, kind)
                if number is not None: return self.store(c, "'path %s %d'" % (kind, number))
            refuse(arg, 'str', 'qlx.storage.MemoryFileStruct')
        elif c != '' and c in '46M': self.numbers(arg, 'Matrix', 12, c, 'qlx.Matrix')
        elif c == 'Q': self.numbers(arg, 'Quaternion', 4, c, 'qlx.Quaternion')
        elif c == 'T': self.numbers(arg, 'BaseTime', 2, c, 'qlx.BaseTime')
        elif c == 'G': self.numbers(arg, 'GeData', 1, c, 'a valid type')
        elif c == 'C':
            none = self.consume('N')
            if none and arg is None: return self.store(c, 0)
            number = self.value(arg, 'Container')
            if number is None: refuse(arg, 'qlx.BaseContainer', *(['None'] if none else []))
            self.store(c, number)
        elif c == 'X':
            number = 0 if arg is None else self.value(arg, 'Thread')
            if number is None: refuse(arg, 'qlx.threading.BaseThread', 'None')
            self.store(c, number)
        elif c == 'V':
            family = ('Color', 'ColorA', 'ColorA32') if self.consume('C') else ('Vector', 'Vector4d', 'Vector4d32')
            kind, count, form = family[0], 3, 'V'
            if self.consume('43'):
                kind, count, form = family[1], 4, 'V4'
                if self.consume('3'): kind, form = family[2], 'V43'
                else: self.consume('6')
            else: self.consume('6')
            self.numbers(arg, kind, count, form, 'net.tavor.parametrictype.' + IDENTIFIERS[kind])
        elif c != '' and c in 'AP':
            if self.consume('!'): self.checked(c, arg, optional)
        elif c == 'O':
            if self.consume('!'): self.checked(c, arg, optional)
            else: self.store(c, repr(arg))
        elif c == 'U':
            try: data = arg.bytes
            except Exception as error: raise raised(error)
            if not isinstance(data, bytes): raise Raised('TypeError: *')
            if len(data) != 16: raise Refused('')
            self.store(c, data.hex())
        elif c == 'c':
            if not isinstance(arg, str) or len(arg) != 1: refuse(arg, 'Char')
            try: self.store(c, arg.encode('utf-8')[0])
            except UnicodeEncodeError as error: raise raised(error)
        elif c != '' and c in 'dfr':
            if not hasattr(type(arg), '__float__'): raise Raised('TypeError: *')
            try: number = float(arg)
            except Exception as error: raise raised(error)
            self.unless_waiting(number == -1)
            self.store(c, '%.17g' % number)
        elif c in RANGES:
            low, high, kind = RANGES[c]
            number = self.integer(arg)
            if not -2**63 <= number < 2**63: raise Raised(TOO_LARGE)
            self.unless_waiting(number == -1)
            if number < low: raise Raised('OverflowError: %s is less than minimum' % kind)
            if number > high: raise Raised('OverflowError: %s is greater than maximum' % kind)
            self.store(c, number)
        elif c != '' and c in 'BIv':
            number = self.integer(arg) % 2**64
            self.unless_waiting(number == 2**64 - 1)
            self.store(c, {'B': (number + 128) % 256 - 128, 'I': number % 2**32, 'v': number}[c])
        elif c == 'l':
            number = self.integer(arg)
            if not -2**63 <= number < 2**63: raise Raised('OverflowError: *')
            self.unless_waiting(number == -1)
            self.store(c, number)
        elif c == 'L':
            number = self.integer(arg)
            if not 0 <= number < 2**64: raise Raised('OverflowError: *')
            self.unless_waiting(number == 2**64 - 1)
            self.store(c, number)
        else: refuse(arg, BAD)

    def item(self, arg, optional):
        if self.next() != '(': return self.simple(arg, optional)
        self.at += 1
        count = depth = 0
        for c in self.format[self.at:]:
            if c in ':;' or (c == ')' and depth == 0): break
            if depth == 0 and (c == '(' or c.isalpha()): count += 1
            depth += (c == '(') - (c == ')')
        if isinstance(arg, (str, dict)) or not hasattr(type(arg), '__getitem__'):
            raise Refused('must be %d-item sequence, not %s' % (count, name_of(arg)))
        try: size = len(arg)
        except Exception as error: raise raised(error)
        if size != count: raise Refused('must be sequence of length %d, not %d' % (count, size))
        for i in range(count):
            try: part = arg[i]
            except Exception: failure = Refused('is not retrievable')
            else:
                try:
                    self.item(part, False)
                    continue
                except Refused as error: failure = error
            failure.levels.insert(0, i)
            raise failure
        if not self.ended(): self.at += 1

    def skip(self):
        c = self.next()
        self.at += 1
        if c == '(':
            while self.next() != ')':
                if self.ended(): return 'Unmatched left paren in format string'
                words = self.skip()
                if words: return words
            self.at += 1
        elif c == ')': return 'Unmatched right paren in format string'
        elif c == 'O': self.slot += 1 + self.consume('!&')
        elif c == 'A' or c == 'P': self.slot += 2 * self.consume('!')
        elif c == 'e':
            self.slot += 2
            if not self.consume('st'): return BAD
        elif c != '' and c in '#$%6BCDGHIKLMQSTUVXbcdfhijklmnrvwz': self.slot += 1
        else: return BAD

    def words_of(self, refused, i):
        function, mark, words = self.format.partition(':')
        if not mark:
            custom = self.format.partition(';')
            if custom[1]: return custom[2]
        text = ('%.200s() ' % words if mark else '') + 'argument %d' % (i + 1)
        for level in refused.levels[:32]:
            if len(text) < 220: text += ', item %d' % level
        return text + ' ' + refused.words[:256]

    def all(self, args, keywords, names):
        function = self.format.partition(':')
        call = function[2] + '()' if function[1] else 'function'
        left, given, least = len(keywords), len(args) + len(keywords), 2**31
        if len(names) < given:
            raise Raised('TypeError: %s takes at most %d argument%s (%d given)' %
                         (call, len(names), '' if len(names) == 1 else 's', given))
        for i, name in enumerate(names):
            if self.consume('|'): least = i
            if self.ended():
                self.fail('RuntimeError: More keyword list entries (%d) than format specifiers (%d)' % (len(names), i))
            values = []
            if left:
                try:
                    if name in keywords: values = [keywords[name]]
                except Exception as error: raise raised(error)
                if values:
                    left -= 1
                    if i < len(args):
                        self.fail("TypeError: Argument given by name ('%s') and position (%d)" % (name, i + 1))
                elif self.waiting: raise Raised(self.waiting)
            if not values and i < len(args): values = [args[i]]
            if values:
                try: self.item(values[0], least < 2**31)
                except Refused as refused: self.fail('TypeError: ' + self.words_of(refused, i))
                continue
            if i < least: self.fail("TypeError: Required argument '%s' (pos %d) not found" % (name, i + 1))
            if not left: return
            start = self.at
            words = self.skip()
            if words: self.fail("RuntimeError: %s: '%s'" % (words, self.format[start:]))
        if not self.ended() and self.next() != '|':
            self.fail("RuntimeError: more argument specifiers than keyword list entries (remaining format:'%s')" %
                      self.format[self.at:])
        if not left: return
        for key in keywords:
            if not isinstance(key, str): self.fail('TypeError: keywords must be strings')
            key = str.__str__(key)
            try: key.encode('utf-8')
            except UnicodeEncodeError: cut = key
            else: cut = key.partition('\0')[0]
            if cut not in names: self.fail("TypeError: '%s' is an invalid keyword argument for this function" % cut)

    # A text of the loop; an exception that waits goes ahead of it.
    def fail(self, text): raise Raised(self.waiting or text)

def parse(args, keywords, format, names):
    state = Parse(format)
    try: state.all(args, keywords, names)
    except Raised as error: return False, error.text, state.written
    return True, state.waiting or '', state.written
)python";

#endif
