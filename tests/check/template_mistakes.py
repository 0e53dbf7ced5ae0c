"""Mistakes that harm maps, and variations that are right: each a name, a set of correct templates and
what is changed in it. Tabs are written as ">"."""


def lf(name):
    return lambda s: s.raw(name, s.text(name).replace('\r\n', '\n').encode('latin-1'))


def utf16(name):
    return lambda s: s.raw(name, s.text(name).encode('utf-16'))


def sub(name, line, *new):
    return lambda s: s.sub(name, line, *new)


def both(*changes):
    def change(s):
        for one in changes:
            one(s)
    return change


def section(name, header, *new):
    return lambda s: s.section(name, header, *new)


def swap(name, one, other):
    """Two lines change places."""
    def change(s):
        lines = s.files[name]
        i, j = s.at(name, one), s.at(name, other)
        lines[i], lines[j] = lines[j], lines[i]
    return change


def remove(name, *lines):
    return both(*(sub(name, line) for line in lines))


def after_header(name, header, line, *new):
    """Puts lines in the place of one in a section."""
    def change(s):
        lines, i = s.files[name], s.at(name, header)
        at = lines.index(line.replace('>', '\t'), i)
        lines[at:at + 1] = [text.replace('>', '\t') for text in new]
    return change


v8o, v8n = 'voldstruct8.txt', 'vnewstruct8.txt'
v9o, v9n = 'voldstruct9.txt', 'vnewstruct9.txt'
v10o, v10n = 'voldstruct10.txt', 'vnewstruct10.txt'
v11o, v11n = 'voldstruct11.txt', 'vnewstruct11.txt'
v12o, v12n = 'voldstruct12.txt', 'vnewstruct12.txt'
v0 = 'vnewstruct0.txt'
t9o, t9n = 'toldstruct9.txt', 'tnewstruct9.txt'
t10n, t11o, t11n = 'tnewstruct10.txt', 'toldstruct11.txt', 'tnewstruct11.txt'
t12o, t12n = 'toldstruct12.txt', 'tnewstruct12.txt'
fixo, fixn = 'toldstructfix13.txt', 'tnewstructfix13.txt'
fix14o, fix14n = 'toldstructfix14.txt', 'tnewstructfix14.txt'

MISTAKES = [
    # Files.
    ('an old template with LF', 'data', lf(v9o)),
    ('a new template with LF', 'data', lf(v9n)),
    ('a template in UTF-16', 'data', utf16(v10o)),
    ('a new template is missing', 'data', lambda s: s.remove(v9n)),
    ('an old template has another name', 'data', lambda s: s.rename(v10o, 'voldstruct1O.txt')),
    ('the fix pair has the old version', 'dropped', both(
        lambda s: s.rename(fix14o, fixo), lambda s: s.rename(fix14n, fixn))),
    ('the baseline has version 100', 'data', sub(v0, 'version 12', 'version 100')),
    ('the baseline keeps the old version', 'renamed', sub(v0, 'version 13', 'version 12')),
    # The version line.
    ('a pair writes an older version', 'data', sub(v9n, 'version 12', 'version 11')),
    ('a pair keeps the version before', 'renamed', sub(v11n, 'version 13', 'version 12')),
    ('a pair does not write the version', 'data', both(
        section(v10o, '= version $1'), section(v10n, '= version $1'))),
    ('the version is recognised with a typing error', 'data',
     sub(v10o, 'version 10', 'verison 10')),
    ('the version line is the second of its section', 'data', both(
        sub(v11n, '= version $1', '= version $2'), sub(v11n, 'version 12', 'seed 1', 'version 12'))),
    # Sections and counts.
    ('a header is forgotten', 'data', remove(v9n, '= star $1')),
    ('a section is forgotten in the new template', 'data', section(v9n, '= position $1')),
    ('a dollar sign makes a line a header', 'data',
     sub(v9n, '>credits &', '>credits in $ &')),
    ('two sections change places', 'data', both(
        section(v9n, '= position $1'), section(v9n, '= star $1', '= star $1', '>star #',
                                               '= position $1', '>position &'))),
    ('a new count is too large', 'data', sub(v9n, '= planet $7', '= planet $8')),
    ('a new count is too large at the end', 'data', sub(v9n, '= fleet $6', '= fleet $7')),
    ('a new count is too small', 'data', sub(v9n, '= planet $7', '= planet $6')),
    ('a new count is 0', 'data', sub(v9n, '= mines $1', '= mines $0')),
    ('an old count is a letter', 'data', sub(v9o, '= mines $1', '= mines $l')),
    ('a planet has a line too many', 'data', sub(v9o, '= planet $6', '= planet $7')),
    ('a planet has a line too few', 'data', sub(v9o, '= planet $6', '= planet $5')),
    ('the rules have a line too many', 'data', sub(v10o, '= rules $6', '= rules $7')),
    ('the rules have a line too few', 'data', sub(v9o, '= rules $6', '= rules $5')),
    ('an old fleet has a line too few', 'data', sub(v9o, '= fleet $7', '= fleet $6')),
    ('an old fleet has a line too many', 'data', sub(v8o, '= fleet $7', '= fleet $8')),
    ('an outpost has a line too many', 'data',
     sub(v9o, '= station outpost $3', '= station outpost $4')),
    ('a station has a line too few', 'data', sub(v8o, '= station $4', '= station $3')),
    ('mines have a line too many', 'data', sub(v9o, '= mines $1', '= mines $2')),
    ('the crew has a line too many', 'data', sub(v10o, '= station crew $1', '= station crew $2')),
    ('an author has a line too many', 'data', sub(v10o, '= author $1', '= author $2')),
    ('a gate has a line too few', 'data', sub(t9o, '= gate $5', '= gate $4')),
    ('a gate of the fix pass has a line too few', 'data', sub(fixo, '= gate $5', '= gate $4')),
    # Recognition lines.
    ('an empty line between sections', 'data', sub(v9o, '= star $1', '', '= star $1')),
    ('the special line stands above the general one', 'data', both(
        section(v9o, '= station outpost $3'), section(v9n, '= station outpost $3'),
        sub(v9o, '= station $4', '= station outpost $3', 'station outpost', '= station $4'),
        sub(v9n, '= station $5', '= station outpost $3', '>station &', '>>hull ##', '>endstation',
            '= station $5'))),
    ('a capital letter', 'data', sub(v9o, 'planet "', 'Planet "')),
    ('blanks for a tab', 'data', sub(v10o, '>color', '    color')),
    ('a typing error in a recognition line', 'data', sub(v9o, 'planet "', 'plannet "')),
    ('a recognition line without its tab', 'data', sub(v11o, '>>morale', '>morale')),
    ('a recognition line is too long', 'data', sub(v9o, 'rules', 'rules ')),
    ('a recognition line is too short', 'data', sub(v9o, 'star', 's')),
    ('a recognition line is too general', 'data', sub(v11o, '>endrules', '>end')),
    ('one of two recognition lines is forgotten', 'data', remove(v8o, 'traps')),
    ('a recognition line of the fix pass has a tab too few', 'data', sub(fixo, '>>from', '>from')),
    ('a recognition line of the fix pass is forgotten', 'data', remove(fixo, '>>kind')),
    # Markers.
    ('a marker without its blank', 'data', sub(v9n, '>>size #', '>>size#')),
    ('a marker for the rest without its blank', 'data', sub(v9n, '>title &', '>title&')),
    ('one digit for two', 'data', sub(v9n, '>>moons ##', '>>moons #')),
    ('one digit for two in the rules', 'data', sub(v10n, '>>turnlimit ##', '>>turnlimit #')),
    ('no blank before two digits', 'data', sub(v8n, '>>hull ##', '>>hull##')),
    ('a tab too many before the rest', 'data', sub(v9n, '>title &', '>>title &')),
    ('a word of another length before the rest', 'data', sub(v10n, '>author &', '>autor &')),
    ('a blank behind a marker', 'data', sub(v9n, '>>moons ##', '>>moons ## ')),
    ('three signs', 'data', sub(v9n, '>>moons ##', '>>moons ###')),
    ('the rest behind the first line', 'data', sub(v9n, '>>class #', '>>class &')),
    ('a constant for a marker', 'data', sub(v9n, '>>class #', '>>class 1')),
    ('a constant for the only marker', 'data', sub(v9n, '>star #', '>star 1')),
    ('a constant in a renamed line', 'data', sub(v9n, '>colour #', '>colour 1')),
    ('a constant in the fix pass', 'data', sub(fixn, '>>>charge #', '>>>charge 1')),
    ('a default that is wrong', 'data', sub(v8n, '>>fog 1', '>>fog 7')),
    # Output lines.
    ('a line is forgotten', 'data', both(
        sub(v9n, '= planet $7', '= planet $6'), remove(v9n, '>>atmosphere #'))),
    ('a line with a default is forgotten', 'data', both(
        sub(v8n, '= planet $7', '= planet $6'), remove(v8n, '>>ruins 0'))),
    ('the closing line is forgotten', 'data', both(
        sub(v9n, '= planet $7', '= planet $6'), remove(v9n, '>endplanet'))),
    ('a closing line is there twice', 'data', both(
        sub(v9n, '= planet $7', '= planet $8'), sub(v9n, '>endplanet', '>endplanet', '>endplanet'))),
    ('two lines change places', 'data', swap(v9n, '>>class #', '>>size #')),
    ('two lines change places in the fix pass', 'data', swap(fixn, '>>>from ##', '>>>to ##')),
    ('a new line stands in the middle', 'data', both(
        remove(v9n, '>>ruins 0'), sub(v9n, '>>class #', '>>ruins 0', '>>class #'))),
    ('a dropped line is left out', 'data', both(
        sub(v9n, '= fleet $6', '= fleet $5'), remove(v9n, 'morale is gone#'))),
    ('a dropped line without its sign', 'data',
     sub(v9n, 'morale is gone#', 'morale is gone')),
    ('a typing error in an output line', 'data', sub(v9n, '>>atmosphere #', '>>atmosfere #')),
    ('a typing error in a default', 'data', sub(v8n, '>>ruins 0', '>>riuns 0')),
    ('an output line has a tab too few', 'data', sub(v9n, '>>ruins 0', '>ruins 0')),
    ('an output line has a tab too many', 'data', sub(v9n, '>mines ##', '>>mines ##')),
    ('an output line has blanks for a tab', 'data', sub(v10n, '>>shield 0', '        shield 0')),
    ('an old line is kept', 'data', both(
        sub(v8n, '= fleet $6', '= fleet $7'), sub(v8n, 'morale is gone#', '>>morale #'))),
    ('a remark between output lines', 'data',
     sub(v9n, '>>ruins 0', '= ruins are new', '>>ruins 0')),
    ('a default is written twice', 'data', both(
        sub(v10n, '= station crew $2', '= station crew $3'),
        sub(v10n, '>>shield 0', '>>shield 0', '>>shield 0'))),
    ('the recognised line is not written', 'data', both(
        sub(v10n, '= end of planet $2', '= end of planet $1'), remove(v10n, '>endplanet'))),
    ('only the recognised line is written', 'data', both(
        sub(v10n, '= station crew $2', '= station crew $1'), remove(v10n, '>>shield 0'))),
    ('a line of the fix pass is forgotten', 'data', both(
        sub(fixn, '= gate $6', '= gate $5'), remove(fixn, '>>>stable 1'))),
    ('the fix pass does not know a line of the first', 'data', sub(t9n, '>>from ##', '>from ##')),
    # Changes that a pair lacks.
    ('an older pair does not add a line', 'data', both(
        section(v11o, '= end of rules $1'), section(v11n, '= end of rules $2'))),
    ('an older pair does not rename a word', 'data', both(
        section(v11o, '= empire colour $1'), section(v11n, '= empire colour $1'))),
    ('an older pair does not drop a line', 'data', both(
        section(v11o, '= fleet morale $1'), section(v11n, '= fleet morale $1'))),
    ('a pair gets only the new version line', 'renamed', both(
        section(v11o, '= moons $1'), section(v11n, '= moons $1'),
        section(v11o, '= lane $1'), section(v11n, '= lane $1'))),
    ('all older pairs get only the new version line', 'renamed', both(
        *(section(name, header) for name in (v10o, v10n, v11o, v11n)
          for header in ('= moons $1', '= lane $1')),
        *(section(name, '= lane $1') for name in (v8o, v8n, v9o, v9n)),
        sub(v8n, '>>satellites ##', '>>moons ##'), sub(v9n, '>>satellites ##', '>>moons ##'))),
    ('one of two words is forgotten', 'renamed', both(
        section(v10o, '= lane $1'), section(v10n, '= lane $1'))),
    ('an older pair writes the old word', 'renamed', sub(v9n, '>>satellites ##', '>>moons ##')),
    ('a renamed line has another tab', 'renamed', sub(v12n, '>>satellites ##', '>satellites ##')),
    ('a renamed value is cut', 'renamed', sub(v12n, '>>satellites ##', '>>satellites #')),
    ('a renamed word is misspelt', 'renamed', sub(v8n, 'route &', 'rute &')),
    ('a renamed line loses its value', 'renamed', sub(v12n, 'route &', 'routes &')),
    # Fields in new blocks.
    ('an older pair does not move a field', 'moved', both(
        section(v11o, '= crew $1'), section(v11n, '= crew $4'))),
    ('a new block is not opened', 'moved', both(
        sub(v9n, '= station $3', '= station $2'), remove(v9n, '>>garrison'))),
    ('a new block is not closed', 'moved', both(
        sub(v12n, '= crew $4', '= crew $3'), remove(v12n, '>>endgarrison'))),
    ('a field is moved with a value of another line', 'moved', sub(v12n, '>>>crew &', '>>>crew ##')),
    ('a split section keeps its count', 'moved', sub(v9o, '= station $2', '= station $4')),
    ('a split section has a line too few', 'moved', sub(v9o, '= crew $2', '= crew $1')),
    ('a field has the tabs of its old place', 'moved', sub(v12n, '>>>crew &', '>>crew &')),
    ('a default is forgotten', 'moved', both(
        sub(v10n, '= station crew $5', '= station crew $4'), remove(v10n, '>>>drill 0'))),
    # Dropped blocks, a new field and a new fix pair.
    ('a dropped block has a line too few', 'dropped',
     sub(t12o, '= listening posts $5', '= listening posts $4')),
    ('a dropped block has a line too many', 'dropped',
     sub(t9o, '= listening posts $4', '= listening posts $5')),
    ('a dropped block is written', 'dropped',
     sub(t12n, 'listening posts are gone#', 'listening posts are gone')),
    ('an older pair does not drop a block', 'dropped', both(
        section(t12o, '= listening posts $5'), section(t12n, '= listening posts $1'))),
    ('the new field is missing in the fix pair', 'dropped', both(
        sub(fix14n, '= gate $7', '= gate $6'), remove(fix14n, '>>>range 0'))),
    ('the new field is missing in the newest pair', 'dropped', both(
        section('toldstruct13.txt', '= stable $1'), section('tnewstruct13.txt', '= stable $2'))),
]

VARIATIONS = [
    ('headers without a sign', 'data', both(
        sub(v9o, '= star $1', 'the star: $1'), sub(v9n, '= star $1', 'the star: $1'))),
    ('other names of sections', 'data', sub(v9n, '= planet $7', '= world $7')),
    ('a word behind a count', 'data', sub(v9n, '= planet $7', '= planet $7 lines, $1 more')),
    ('a blank before a count', 'data', sub(v9n, '= planet $7', '= planet $ 7')),
    ('remarks behind the output', 'data',
     sub(v9n, '= star $1', '= The star has no value', '', '= star $1')),
    ('remarks in an old template', 'data', sub(v9o, '= star $1', '= ----', '= star $1')),
    ('remarks in the baseline', 'data', sub(v0, '>rules', '= The rules:', '', '>rules')),
    ('empty lines at the end', 'data', lambda s: s.raw(v9o, s.text(v9o).encode() + b'\r\n\r\n')),
    ('no line end at the end', 'data', lambda s: s.raw(v9o, s.text(v9o).encode().rstrip())),
    ('another title', 'data', sub(v9o, 'Vorakai galaxy', 'For version 9')),
    ('names in capital letters', 'data', lambda s: s.rename(v9o, 'VOLDSTRUCT9.TXT')),
    ('other files in the folder', 'data', lambda s: s.new('readme.txt', 'a', '').new('voldstruct.txt', 'b')),
    ('a baseline of two lines', 'data', lambda s: s.new(v0, 'Vorakai galaxy', 'version 12')),
    ('a shorter recognition line', 'data', sub(v9o, 'planet "', 'planet')),
    ('a recognition line of the version without number', 'data', sub(v9o, 'version 9', 'version')),
    ('two recognition lines', 'data', sub(v9o, 'mines', 'mines', 'traps')),
    ('a special line beside a general one', 'data', sub(v9o, 'station outpost',
                                                       'station outpost', 'station outpost 1')),
    ('sections in another order in both', 'data', both(
        section(v9o, '= mines $1'), section(v9n, '= mines $1'),
        sub(v9o, '= star $1', '= mines $1', 'mines', '= star $1'),
        sub(v9n, '= star $1', '= mines $1', '>mines ##', '= star $1'))),
    ('two digits for a value of one', 'data', sub(v9n, '>>class #', '>>class ##')),
    ('a value with its rest', 'data', sub(v9n, '>colour #', '>colour &')),
    ('another text of a dropped line', 'data',
     sub(v9n, 'morale is gone#', 'no more morale since version 11 #1#')),
    ('a line is inserted before another', 'data', both(
        lambda s: s.section(v10o, '= end of planet $1', '= end of planet $0', '>endplanet'),
        lambda s: s.section(v10n, '= end of planet $2', '= end of planet $1', '>>ruins 0'))),
    ('a block is dropped', 'data', lambda s: s.add(
        9, ('listening posts', 4), ['station listening'], 'listening posts are gone#')),
    ('a block is dropped by a shorter section', 'data', lambda s: s.add(
        10, ('listening posts', 4), ['>station listening'], 'gone#', 'gone#')),
    ('a fix pair that does nothing', 'data', both(
        *(lambda s, n=n: s.new(n, 'Tarnfall galaxy') for n in (fixo, fixn)))),
    ('a fix pair of remarks', 'data', both(
        *(lambda s, n=n: s.new(n, 'Tarnfall galaxy', '= Nothing to do.') for n in (fixo, fixn)))),
    ('a fraction as a count', 'data', sub(v9n, '= star $1', '= star $1.5')),
    ('a count below 0 inserts', 'data', both(
        lambda s: s.section(v10o, '= end of planet $1', '= end of planet $-1', '>endplanet'),
        lambda s: s.section(v10n, '= end of planet $2', '= end of planet $1', '>>ruins 0'))),
    ('values are enumerated', 'data', both(
        section(v9o, '= star $1'), section(v9n, '= star $1'),
        *(lambda s, n=n: s.add(9, (f'star {n}', 1), [f'star {n}'], f'>star {9 - n}')
          for n in range(1, 9)))),
    ('a whole version line with another word', 'data', both(
        sub(v9o, 'version 9', 'version 9', 'format 9'),)),
    ('a version line that is not recognised as the baseline has it', 'data',
     sub(v8o, 'version 8', 'Version 8', 'vers')),
    ('a section takes in another', 'data', both(
        sub(v9o, '= position $1', '= position $2'),
        section(v9n, '= position $1', '= position $2', '>position &', '>star #'))),
    ('a section is split', 'data', both(
        sub(v9o, '= planet $6', '= planet $3'), lambda s: s.section(
            v9n, '= planet $7', '= planet $3', '>planet &', '>>class #', '>>size #'),
        lambda s: s.add(9, ('moons', 3), ['moons'], '>>moons ##', '>>atmosphere #', '>>ruins 0',
                        '>endplanet'))),
    ('a finding is silenced', 'data', both(
        sub(v9o, '= star $1', '= check: unmatched', '= star $1'),
        sub(v9o, 'star', 'star', 'starlight'))),
    ('a line is replaced by one in its place', 'data', both(
        sub(v9n, '= station $5', '= check: other-value', '= station $5'))),
    ('one pair more for a later release', 'renamed', both(
        sub(v0, 'version 13', 'version 12'), *(sub(n, 'version 13', 'version 12')
                                               for n in (v8n, v9n, v10n, v11n, v12n)))),
    ('maps that are dropped lines only', 'moved', sub(v12n, '>>>drill 0', '>>>drill 3')),
    ('another default', 'dropped', sub(fix14n, '>>>range 0', '>>>range 12')),
]
