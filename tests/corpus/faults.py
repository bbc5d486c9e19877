"""What can become of a file on its way into a shop: cut short, some bits turned, the beginning of
another file in front, a stretch of nothing, a wrong name. The same seed gives the same files."""

import collections
import functools
import itertools
import random

from specimens import ending_of, is_subtitle

CUTS, FLIPS = 20, 200
HEADER = 512

# Name and ending of the file, a function that makes what it holds, and the kind of fault; "whole" for
# none.
Case = collections.namedtuple("Case", "name ending content fault")


def cut(content, length):
    return content[:length]


def flipped(content, place):
    byte, bit = divmod(place, 8)
    return content[:byte] + bytes([content[byte] ^ 1 << bit]) + content[byte + 1:]


def zeroed(content, begin, end):
    return content[:begin] + bytes(end - begin) + content[end:]


def with_header(content, other):
    size = min(HEADER, len(content) // 2)
    return other[:size] + content[size:]


def faults_of(name, files, seed):
    """Every case of one specimen."""
    content, ending = files[name], ending_of(name)
    length = len(content)
    chance = random.Random(f"{seed} {name}")
    others = [other for other in sorted(files) if ending_of(other) != ending]

    def case(fault, variant, change, *arguments, called=ending):
        return Case(f"{name}-{fault}{variant}", called,
                    functools.partial(change, content, *arguments), fault)

    yield case("whole", "", cut, length)
    for number in range(CUTS):
        yield case("cut", number, cut, length * number // CUTS)
    for number in range(FLIPS):
        # One in each stretch, so that no part of the file is left out.
        place = (number + chance.random()) * length * 8 / FLIPS
        yield case("flip", number, flipped, int(place))
    for number, other in enumerate(chance.sample(others, 3)):
        yield case("header", number, with_header, files[other])
    for number, (begin, end) in enumerate(((0, 0.05), (0.3, 0.6), (0.9, 1), (0, 1))):
        yield case("zero", number, zeroed, int(length * begin), int(length * end))
    # Subtitles get another one's name: one that means a film would make a film of them.
    kin = [other for other in others if is_subtitle(other) == is_subtitle(name)]
    for number, other in enumerate(chance.sample(kin, 3)):
        yield case("name", number, cut, length, called=ending_of(other))


def all_cases(files, seed):
    return [case for name in files for case in faults_of(name, files, seed)]


def sample(cases, count, seed):
    """As many of the cases, by chance. Each kind of file has its share, so that each codec is met, and
    no more than half of it are flipped bits while there are others."""
    chance = random.Random(f"{seed} {count}")
    shuffled = chance.sample(cases, len(cases))
    kinds = collections.defaultdict(lambda: ([], []))
    for case in shuffled:
        kinds[case.name.rpartition("-")[0]][case.fault == "flip"].append(case)
    # Of each kind in turns: one that is not a flip, one that is.
    queues = [[case for pair in itertools.zip_longest(*both) for case in pair if case]
              for both in kinds.values()]
    chance.shuffle(queues)
    chosen = [case for turn in itertools.zip_longest(*queues) for case in turn if case][:count]
    chance.shuffle(chosen)
    return chosen
