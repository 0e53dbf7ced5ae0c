"""Sets of correct templates: those in data, and three made-up format changes that follow on them."""

import pathlib

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Set:
    """The templates of a folder as lists of lines, by the files' names."""

    def __init__(self, files):
        self.files = {name: list(lines) for name, lines in files.items()}
        self.bytes = {}  # of files that are not written as lines with CR LF

    def copy(self):
        other = Set(self.files)
        other.bytes = dict(self.bytes)
        return other

    def at(self, name, line):
        """Where a line stands that a file has; the file is an error without it."""
        return self.files[name].index(line.replace('>', '\t'))

    def sub(self, name, line, *new):
        """Puts lines in the place of one. Tabs are written as ">"."""
        i = self.at(name, line)
        self.files[name][i:i + 1] = [text.replace('>', '\t') for text in new]
        return self

    def after(self, name, line, *new):
        return self.sub(name, line, line, *new)

    def section(self, name, header, *new):
        """Puts other lines in the place of a section, its header included."""
        lines, i = self.files[name], self.at(name, header)
        end = next((j for j in range(i + 1, len(lines)) if '$' in lines[j]), len(lines))
        lines[i:end] = [text.replace('>', '\t') for text in new]
        return self

    def add(self, version, header, recognised, *output, letter='v'):
        """Adds a section at the ends of the pair of a version. Its counts are those of the lines in
        a map and of the output."""
        name, count = header
        self.files[f'{letter}oldstruct{version}.txt'] += [f'= {name} ${count}'] + [
            text.replace('>', '\t') for text in recognised]
        self.files[f'{letter}newstruct{version}.txt'] += [f'= {name} ${len(output)}'] + [
            text.replace('>', '\t') for text in output]
        return self

    def new(self, name, *lines):
        self.files[name] = [text.replace('>', '\t') for text in lines]
        return self

    def remove(self, name):
        del self.files[name]
        return self

    def rename(self, name, other):
        self.files[other] = self.files.pop(name)
        return self

    def raw(self, name, data):
        """Writes a file as these bytes."""
        self.bytes[name] = data
        return self

    def text(self, name):
        return '\r\n'.join(self.files[name]) + '\r\n'

    def write(self, folder):
        for name, lines in self.files.items():
            data = self.bytes.get(name, self.text(name).encode('latin-1'))
            (folder / name).write_bytes(data)


def data():
    """The templates that ship."""
    paths = sorted((ROOT / 'data').glob('?*struct*.txt'))
    return Set({p.name: p.read_bytes().decode('latin-1').rstrip('\r\n').split('\r\n') for p in paths})


def new_version(letter, old, current):
    """Copies the templates for a release with a new version: a pair from the old one, and the version
    line in all others."""
    s = data()
    for name in s.files:
        if name.startswith(letter + 'new') and f'version {old}' in s.files[name]:
            s.sub(name, f'version {old}', f'version {current}')
    title = s.files[f'{letter}newstruct0.txt'][0]
    s.new(f'{letter}oldstruct{old}.txt', title, '= version $1', f'version {old}')
    s.new(f'{letter}newstruct{old}.txt', title, '= version $1', f'version {current}')
    return s


def renamed():
    """Moons are satellites now, and lanes are routes."""
    s = new_version('v', 12, 13)
    s.sub('vnewstruct0.txt', '>>moons', '>>satellites').sub('vnewstruct0.txt', 'lane', 'route')
    for version in (8, 9):
        s.sub(f'vnewstruct{version}.txt', '>>moons ##', '>>satellites ##')
    for version in (10, 11, 12):
        s.add(version, ('moons', 1), ['>>moons'], '>>satellites ##')
    for version in (8, 9, 10, 11, 12):
        s.add(version, ('lane', 1), ['lane'], 'route &')
    return s


def moved():
    """A station's crew has moved into a block of its own, with its drill."""
    s = new_version('v', 12, 13)
    s.sub('vnewstruct0.txt', '>>crew', '>>garrison', '>>>crew', '>>>drill', '>>endgarrison')
    for version in (11, 12):
        s.add(version, ('crew', 1), ['>>crew'],
              '>>garrison', '>>>crew &', '>>>drill 0', '>>endgarrison')
    s.section('vnewstruct10.txt', '= station crew $2', '= station crew $5',
              '>>garrison', '>>>crew &', '>>>drill 0', '>>endgarrison', '>>shield 0')
    for version in (8, 9):  # the crew's value is aligned only where its line begins a block
        s.section(f'voldstruct{version}.txt', '= station $4', '= station $2', 'station')
        s.section(f'vnewstruct{version}.txt', '= station $5', '= station $3',
                  '>station &', '>>hull ##', '>>garrison')
        s.add(version, ('crew', 2), ['crew'],
              '>>>crew ##', '>>>drill 0', '>>endgarrison', '>>shield 0', '>endstation')
    return s


def dropped():
    """Listening posts are gone, and gates have a range."""
    s = new_version('t', 13, 14)
    s.sub('tnewstruct0.txt', '>>>stable', '>>>stable', '>>>range')
    s.rename('toldstructfix13.txt', 'toldstructfix14.txt')
    s.rename('tnewstructfix13.txt', 'tnewstructfix14.txt')
    s.sub('tnewstructfix14.txt', '= gate $6', '= gate $7')
    s.sub('tnewstructfix14.txt', '>>>stable 1', '>>>stable 1', '>>>range 0')
    s.add(13, ('stable', 1), ['>>>stable'], '>>>stable #', '>>>range 0', letter='t')
    for version, count, tabs in ((9, 4, ''), (10, 4, '>'), (11, 5, '>'), (12, 5, '>'), (13, 5, '>')):
        remark = ['= check: unmatched'] if version == 11 else []  # the sample has none
        s.add(version, ('listening posts', count), remark + [tabs + 'station listening'],
              'listening posts are gone#', letter='t')
    return s


SETS = {'data': data, 'renamed': renamed, 'moved': moved, 'dropped': dropped}
