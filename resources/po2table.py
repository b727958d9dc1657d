#!/usr/bin/env python3
"""Turns the message catalogue's PO files into a compiled-in C++ table.

Each PO file holds one language; an entry's msgctxt is the message number, msgid the English text
and msgstr the translation (empty in the English file, where msgid is the text). The control's
messages are numbered 0..999 and the command-line tool's 2000..2999. The language's base is added to
the number, so French 106 is entry 1106; the command-line texts are kept 100000 further on, so French
2001 is entry 103001.

The build stops on a malformed file, a number given twice in one file, a number outside both ranges, or a
translation whose msgid is not the English text of its number (a translation made for another text).
Fuzzy and obsolete entries are left out, as msgfmt leaves them out; an untranslated entry is left out
too, so the lookup falls back to English at run time.
usage: po2table.py OUTPUT.cpp LANG=BASE:FILE.po ...   (the English file, base 0, first)
"""
import sys


CLI_FIRST, CLI_END, CLI_TABLE_OFFSET = 2000, 3000, 100000


def table_id(base, number):
    return base + number if number <= 999 else CLI_TABLE_OFFSET + base + number


class PoError(Exception):
    pass


def unquote(line, where):
    text = line.strip()
    if len(text) < 2 or not (text.startswith('"') and text.endswith('"')):
        raise PoError(where + ": not a quoted string: " + line.strip())
    body = text[1:-1]
    out, i = [], 0
    escapes = {'n': '\n', 'r': '\r', 't': '\t', '"': '"', '\\': '\\'}
    while i < len(body):
        c = body[i]
        if c == '\\':
            if i + 1 >= len(body) or body[i + 1] not in escapes:
                raise PoError(where + ": bad escape in " + line.strip())
            out.append(escapes[body[i + 1]])
            i += 2
        else:
            out.append(c)
            i += 1
    return ''.join(out)


def entries(path):
    """Yields (line number, flags, fields) for each entry; fields maps msgctxt/msgid/msgstr to text."""
    current, flags, field, start = {}, set(), None, 0

    def finish():
        if not current:
            return None
        if 'msgid' not in current or 'msgstr' not in current:
            raise PoError("%s:%d: entry without msgid or msgstr" % (path, start))
        return (start, flags, current)

    with open(path, encoding='utf-8') as f:
        for number, raw in enumerate(f, 1):
            where = "%s:%d" % (path, number)
            line = raw.strip()
            if line.startswith('#~'):
                continue  # obsolete entry
            if not line or line.startswith('#'):
                if current and 'msgstr' in current:
                    done = finish()
                    if done:
                        yield done
                    current, flags, field = {}, set(), None
                if line.startswith('#,'):
                    flags |= {flag.strip() for flag in line[2:].split(',')}
                continue
            for key in ('msgctxt', 'msgid', 'msgstr'):
                if line.startswith(key + ' ') or line.startswith(key + '"'):
                    if key in current or (key != 'msgstr' and 'msgstr' in current):
                        done = finish()
                        if done:
                            yield done
                        current, flags = {}, set()
                    if not current:
                        start = number
                    field = key
                    current[key] = unquote(line[len(key):], where)
                    break
            else:
                if line.startswith('msgid_plural') or line.startswith('msgstr['):
                    raise PoError(where + ": plural forms are not used by the catalogue")
                if field is None:
                    raise PoError(where + ": stray line: " + line)
                current[field] += unquote(line, where)
    done = finish()
    if done:
        yield done


def read_language(path):
    """Returns {number: (msgid, msgstr)} of the file's numbered, non-fuzzy entries."""
    result = {}
    for line, flags, fields in entries(path):
        if 'msgctxt' not in fields:
            continue  # the PO header
        where = "%s:%d" % (path, line)
        context = fields['msgctxt']
        if not context.isdigit():
            raise PoError(where + ": msgctxt is not a message number: " + context)
        number = int(context)
        if not (number <= 999 or CLI_FIRST <= number < CLI_END):
            raise PoError(where + ": message number %d is outside 0..999 and %d..%d (the base is added here)"
                          % (number, CLI_FIRST, CLI_END - 1))
        if number in result:
            raise PoError(where + ": message %d given twice" % number)
        if 'fuzzy' in flags:
            continue
        result[number] = (fields['msgid'], fields['msgstr'])
    return result


def cpp_string(text):
    out = []
    for byte in text.encode('utf-8'):
        ch = chr(byte)
        if ch == '"' or ch == '\\':
            out.append('\\' + ch)
        elif 32 <= byte < 127 and ch != '?':  # '?' kept out of trigraph reach
            out.append(ch)
        else:
            out.append('\\%03o' % byte)
    return '"' + ''.join(out) + '"'


def build_table(arguments):
    table, english = {}, None
    for argument in arguments:
        base_part, path = argument.split(':', 1)
        base = int(base_part.split('=', 1)[1])
        language = read_language(path)
        if base == 0:
            english = {number: msgid for number, (msgid, _) in language.items()}
            for number, (msgid, _) in language.items():
                table[table_id(0, number)] = msgid
            continue
        if english is None:
            raise PoError("the English file (base 0) must come first")
        for number, (msgid, msgstr) in language.items():
            if english.get(number) != msgid:
                raise PoError("%s: message %d translates %r, but its English text is %r"
                              % (path, number, msgid, english.get(number)))
            if msgstr:
                table[table_id(base, number)] = msgstr
    return table


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    output, arguments = sys.argv[1], sys.argv[2:]
    try:
        table = build_table(arguments)
    except PoError as error:
        sys.exit("po2table: " + str(error))
    with open(output, 'w', encoding='utf-8') as f:
        f.write('// Generated from resources/*.po by po2table.py. Do not edit.\n')
        f.write('#include "dialogs/MessageTable.h"\n\nnamespace cvn73100 {\n\n')
        f.write('const MessageEntry kMessageTable[] = {\n')
        for number in sorted(table):
            f.write('    {%d, %s},\n' % (number, cpp_string(table[number])))
        f.write('};\n\nconst std::size_t kMessageTableSize = sizeof kMessageTable / sizeof kMessageTable[0];\n\n')
        f.write('}  // namespace cvn73100\n')


if __name__ == '__main__':
    main()
