"""What scripts/mutate runs in its copy of the repository: makes the changes, builds and tests."""

import fnmatch
import os
import random
import re
import resource
import signal
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

BUILD = Path('../build')
LEAST_SHARE = 85
MEMORY = 4 << 30  # a change may make a program ask for all there is
# What takes long, and measures time or memory.
FILTER = '-*MegabyteOfInput*:*HundredThousandColumns*'
# Programs that no change in src/ can bring to fail, since they test the base services or how the library is exported,
# and one that takes long.
LEFT_OUT = re.compile('kvb|kvdom|kvlog|exported_symbols|slot_order|first_use_fault')


# --- Changes


@dataclass
class Mutant:
    """Puts `text` in the place of what stands between two positions of a file."""

    path: Path
    begin: int
    end: int
    text: str

    def apply(self, source):
        return source[:self.begin] + self.text + source[self.end:]

    def describe(self, source):
        line = source.count('\n', 0, self.begin) + 1
        old = ' '.join(source[self.begin:self.end].split())
        return f'{self.path}:{line}: "{old}" becomes "{self.text.strip()}"'


def blanked(source):
    """The source with blanks for all that is no code: comments, literals, directives, static assertions."""
    no_code = re.compile(r'//[^\n]*|/\*.*?\*/|(?<!\w)R"\(.*?\)"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])+\'|'
                         r'^#[^\n]*|static_assert\([^;]*;', re.DOTALL | re.MULTILINE)
    return no_code.sub(lambda found: re.sub(r'[^\n]', ' ', found[0]), source)


OPERATORS = {
    '==': '!=', '!=': '==', '<': '<=', '<=': '<', '>': '>=', '>=': '>', '&&': '||', '||': '&&', '+': '-', '-': '+',
    '*': '/', '/': '*', '&': '|', '|': '&', '+=': '-=', '-=': '+=', '|=': '=',
}
# Other uses of these characters, in types for instance, have no blanks on both sides.
OPERATOR = re.compile(r'(?<= )(?:' + '|'.join(sorted(map(re.escape, OPERATORS), key=len, reverse=True)) + r')(?=\s)')
WORDS = {'true': 'false', 'false': 'true', '++': '--', '--': '++', 'break': 'continue', 'continue': 'break'}
WORD = re.compile(r'\b(?:true|false|break|continue)\b|\+\+|--')
NUMBER = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F]+|\d[\d']*)(?=[uUlL]*(?![\w.']))")
NEGATION = re.compile(r'!(?=[\w(])')
CONDITION = re.compile(r'\b(?:if|while) \(')
RETURN = re.compile(r'\breturn ([^;{}]+)(?=;)')
SAME_AS_NOTHING = re.compile(r'true|false|nullptr|0|[A-Z]\w+\(\)')
STATEMENT_BEGIN = r'(?:^ *|(?<=[;{)] )|(?<=else ))'
STATEMENT = re.compile(STATEMENT_BEGIN + r'(?!return\b|delete\b|throw\b|using\b)(\*?[A-Za-z_][\w:.\->*\[\]]*'
                       r'(?:\([^;{}]*\)| (?:=|\+=|-=|\|=|<<) [^;{}]*);)', re.MULTILINE)


def closing(code, begin):
    """The place of the parenthesis that closes the one at `begin`."""
    depth = 0
    for place in range(begin, len(code)):
        depth += {'(': 1, ')': -1}.get(code[place], 0)
        if depth == 0:
            return place
    raise ValueError('unbalanced parentheses')


def is_balanced(code):
    depth = 0
    for character in code:
        depth += {'(': 1, ')': -1}.get(character, 0)
        if depth < 0:
            return False
    return depth == 0


def conditions(code):
    """Conditions without an operator of their own, which nothing else would turn round."""
    for found in CONDITION.finditer(code):
        begin, end = found.end(), closing(code, found.end() - 1)
        if not re.search(r'[!=<>&|;]', code[begin:end].replace('->', '')):
            yield begin, end


def mutants(path, source):
    """Every change that can be made to a file."""
    code = blanked(source)

    def change(begin, end, text):
        return Mutant(path, begin, end, text)

    for found in OPERATOR.finditer(code):
        yield change(*found.span(), OPERATORS[found[0]])
    for found in WORD.finditer(code):
        yield change(*found.span(), WORDS[found[0]])
    for found in NUMBER.finditer(code):
        next_number = int(found[1].replace("'", ''), 0) + 1
        yield change(*found.span(1), hex(next_number) if found[1].startswith('0x') else str(next_number))
    for found in NEGATION.finditer(code):
        yield change(*found.span(), '')
    for begin, end in conditions(code):
        yield change(begin, end, f'!({source[begin:end]})')
    for found in RETURN.finditer(code):
        if not SAME_AS_NOTHING.fullmatch(found[1]):
            yield change(*found.span(1), '{}')
    for found in STATEMENT.finditer(code):
        if is_balanced(found[1]):
            # What is left keeps the line numbers that messages carry.
            yield change(*found.span(1), re.sub(r'[^\n]', '', found[1]) + ';')


def code_lines(source):
    return sum(1 for line in blanked(source).splitlines() if line.strip())


def interleaved(seed, wanted):
    """The changes in the order in which to make them: each file has its share wherever the run ends."""
    sources = {path: path.read_text() for path in sorted(Path('src').glob('*.[ch]*'))}
    all_lines = sum(map(code_lines, sources.values()))
    placed = []
    for path, source in sources.items():
        of_file = list(mutants(path, source))
        random.Random(f'{seed} {path}').shuffle(of_file)
        share = wanted * code_lines(source) / all_lines
        placed += [((number + 0.5) / share, str(path), mutant) for number, mutant in enumerate(of_file)]
    return [mutant for _, _, mutant in sorted(placed, key=lambda place: place[:2])]


# --- Building and testing


def build(*targets, mutated):
    """Whether the targets can be built. The compiler cache serves what is not mutated, and learns nothing else."""
    environment = dict(os.environ, **({'CCACHE_READONLY': '1'} if mutated else {}))
    command = ['ninja', '-C', BUILD, *(['-j1'] if mutated else []), *targets]
    return subprocess.run(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                          check=False).returncode == 0


def limit_resources():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def passes(test, seconds):
    """Whether a test program succeeds in that time."""
    command = [BUILD / 'tests' / test, '--gtest_fail_fast', f'--gtest_filter={FILTER}']
    program = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               preexec_fn=limit_resources, start_new_session=True)
    try:
        return program.wait(seconds) == 0
    except subprocess.TimeoutExpired:
        os.killpg(program.pid, signal.SIGKILL)
        program.wait()
        return False


def test_programs():
    """The test programs that can notice a change."""
    sources = [path for folder in ('unit', 'interface', 'fault') for path in Path('tests', folder).glob('*_test.cpp')]
    return [path.stem for path in sources if not LEFT_OUT.match(path.stem)]


def measured(tests):
    """The tests with their durations, the quickest first."""
    durations = {}
    for test in tests:
        begin = time.monotonic()
        if not passes(test, 600):
            sys.exit(f'mutate: {test} fails without any change')
        durations[test] = time.monotonic() - begin
    return dict(sorted(durations.items(), key=lambda entry: entry[1]))


def of_same_area(source):
    """The patterns of the test programs that the first lines of a source file name."""
    return re.findall(r'([\w*]+_test)\.cpp', source[:source.index('#')])


def in_order(tests, source):
    """The tests of the file first."""
    patterns = of_same_area(source)
    return sorted(tests, key=lambda test: not any(fnmatch.fnmatch(test, pattern) for pattern in patterns))


def killer(source, durations):
    """The test program that notices what is different now, or None; '' for a change that does not compile."""
    if not build('kvxdm_static', mutated=True):
        return ''
    for test in in_order(durations, source):
        if not build(test, mutated=True):
            return ''
        if not passes(test, 10 + 10 * durations[test]):
            return test
    return None


def judged(mutant, durations):
    source = mutant.path.read_text()
    mutant.path.write_text(mutant.apply(source))
    try:
        return killer(source, durations)
    finally:
        mutant.path.write_text(source)


def run(wanted, seed, minutes):
    tests = test_programs()
    if not build(*tests, mutated=False):
        sys.exit('mutate: the tests cannot be built')
    durations = measured(tests)
    begin = time.monotonic()
    made = survived = 0
    for mutant in interleaved(seed, wanted):
        if made == wanted or time.monotonic() - begin > 60 * minutes:
            break
        description = mutant.describe(mutant.path.read_text())
        test = judged(mutant, durations)
        if test == '':
            continue
        made += 1
        survived += test is None
        print(f'{description}: ' + (f'killed by {test}' if test else 'SURVIVED'), flush=True)
    share = 100 * (made - survived) / made
    print(f'{made} mutants, {made - survived} killed, {share:.1f}%, in {(time.monotonic() - begin) / 60:.0f} minutes')
    return share >= LEAST_SHARE


if __name__ == '__main__':
    arguments = [int(argument) for argument in sys.argv[1:]]
    sys.exit(0 if run(*(arguments + [300, 1, 80][len(arguments):])) else 1)
