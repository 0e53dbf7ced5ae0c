#!/usr/bin/env python3
"""Puts mistakes and legal variations into correct templates, one at a time, and counts the mistakes
that vora-template-check does not find and the variations that it calls an error.

    mistakes.py BUILD_FOLDER [-v]

Prints the silent ones, and with -v what is found for each. Fails when too many are silent, when a
mistake does no harm to any of the maps, and when a correct set has a finding.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
from template_mistakes import MISTAKES, VARIATIONS  # noqa: E402
from template_sets import ROOT, SETS  # noqa: E402

CHECKER = pathlib.Path(sys.argv[1]).resolve() / 'vora-template-check'
VERBOSE = '-v' in sys.argv
MOST_SILENT = {'without maps': 4 / 10, 'with maps': 1 / 15}


def check(templates, maps, *options):
    """Runs the checker; its findings, the difference that the conversion makes, and its status."""
    run = subprocess.run([CHECKER, *options, templates, *maps], capture_output=True, timeout=60)
    if run.returncode not in (0, 1):
        sys.exit(f'the checker failed: {run.stderr.decode()}')
    head, _, diff = run.stdout.decode('latin-1').partition('--- ')
    findings = [line for line in head.splitlines() if re.search(r'\[[a-z-]+\]$', line)]
    return findings, diff, run.returncode


def make_maps(folder):
    """The sample's maps, and each converted one as a map of the current version."""
    for path in sorted((ROOT / 'sample').rglob('*')):
        if path.suffix.lower() != '.galaxy' or not path.is_file():
            continue
        maps = folder / path.relative_to(ROOT / 'sample').parts[0]
        maps.mkdir(exist_ok=True)
        old, new = maps / path.name, maps / f'current {path.name}'
        shutil.copy(path, old)
        _, diff, _ = check(ROOT / 'data', [old], '--diff')
        if diff:
            shutil.copy(path, new)
            subprocess.run(['patch', '--binary', '-s', new], input=f'--- {diff}'.encode('latin-1'),
                           check=True)


class Trial:
    """A changed set, checked without and with maps."""

    def __init__(self, base, change, scratch, maps):
        self.set = SETS[base]()
        change(self.set)
        folder = pathlib.Path(tempfile.mkdtemp(dir=scratch))
        self.set.write(folder)
        self.alone, _, _ = check(folder, [])
        self.findings, self.diff, _ = check(folder, [maps], '--diff')
        shutil.rmtree(folder)


def show(kind, name, findings):
    print(f'{kind}: {name}')
    for finding in findings if VERBOSE else []:
        print(f'    {re.sub("^.*/", "", finding)}')


def count_mistakes(correct, scratch, maps):
    silent = {'without maps': 0, 'with maps': 0}
    harmless = 0
    for name, base, change in MISTAKES:
        trial = Trial(base, change, scratch, maps)
        harm = trial.diff != correct[base].diff or any('not-current' in f for f in trial.findings)
        known = {re.sub(r'^.*/', '', f) for f in correct[base].findings}
        new = [f for f in trial.findings if re.sub(r'^.*/', '', f) not in known]
        alone = [f for f in trial.alone if re.sub(r'^.*/', '', f) not in known]
        if not harm:
            harmless += 1
            print(f'does no harm: {name}')
        for where, findings in (('without maps', alone), ('with maps', new)):
            silent[where] += not findings
        if not new:
            show('silent', name, [])
        elif not alone:
            show('silent without maps', name, new)
        elif VERBOSE:
            show('found', name, new)
    for where, number in silent.items():
        print(f'{where}: {number} of {len(MISTAKES)} mistakes are silent')
    few = all(number <= MOST_SILENT[where] * len(MISTAKES) for where, number in silent.items())
    return few and harmless == 0


def count_variations(scratch, maps):
    errors = warned = 0
    for name, base, change in VARIATIONS:
        trial = Trial(base, change, scratch, maps)
        found = trial.alone + trial.findings
        wrong = [f for f in found if ' error: ' in f]
        errors += bool(wrong)
        warned += bool(found)
        if wrong:
            print(f'false error: {name}', *wrong, sep='\n    ')
        elif found:
            show('warning', name, found)
    print(f'{errors} of {len(VARIATIONS)} variations have a false error, {warned} a finding')
    return errors == 0


def main():
    with tempfile.TemporaryDirectory() as scratch:
        maps = pathlib.Path(scratch) / 'maps'
        maps.mkdir()
        make_maps(maps)
        correct = {base: Trial(base, lambda s: None, scratch, maps) for base in SETS}
        clean = True
        for base, trial in correct.items():
            for finding in trial.alone + trial.findings:
                clean = False
                print(f'the correct set "{base}": {finding}')
        few = count_mistakes(correct, scratch, maps)
        right = count_variations(scratch, maps)
    sys.exit(0 if clean and few and right else 1)


main()
