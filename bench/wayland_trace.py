"""What a client's own protocol trace (WAYLAND_DEBUG=1) tells about the pictures it presented."""

import re

# The trace counts microseconds of the system's clock in 32 bits.
WRAP_MS = 2**32 / 1000

LINE = re.compile(r"^\[\s*(\d+\.\d+)\]\s+(.*)")
SUBSURFACE = re.compile(r"-> wl_subcompositor@\d+\.get_subsurface\(new id \w+@\d+, wl_surface@(\d+), "
                        r"wl_surface@(\d+)")
ATTACH = re.compile(r"-> wl_surface@(\d+)\.attach\((nil|wl_buffer@\d+)")
COMMIT = re.compile(r"-> wl_surface@(\d+)\.commit\(\)")
KEY = re.compile(r"wl_keyboard@\d+\.key\(\d+, \d+, (\d+), 1\)")
# How the player and mpv say which file comes now.
ITEM = re.compile(r"OnPlay(?:Video|Photo)\(\d+\) > (.+)|^Playing: (.+)")


class Trace:
    """The pictures, keys and items of one client's output. Times are milliseconds, of a clock that
    begins anew every 71 minutes; differences are taken with since()."""

    def __init__(self, lines):
        self.surfaces = {}
        self.keys = []
        self._items = []
        self._parents = {}
        pending = set()
        for number, line in enumerate(lines):
            stamped = LINE.match(line)
            if stamped:
                self._note(number, float(stamped[1]), stamped[2], pending)
            elif ITEM.search(line):
                self._items.append(number)

    def _note(self, number, stamp, request, pending):
        if found := ATTACH.match(request):
            (pending.discard if found[2] == "nil" else pending.add)(found[1])
        elif found := COMMIT.match(request):
            if found[1] in pending:
                pending.discard(found[1])
                self.surfaces.setdefault(found[1], []).append((number, stamp))
        elif found := SUBSURFACE.match(request):
            self._parents[found[1]] = found[2]
        elif found := KEY.match(request):
            self.keys.append((stamp, int(found[1])))

    def film_surface(self):
        """The surface of the film: the subsurface with most pictures, or the busiest of all."""
        of_film = [name for name in self.surfaces if name in self._parents]
        return max(of_film or self.surfaces, key=lambda name: len(self.surfaces[name]),
                   default=None)

    def _film(self):
        surface = self.film_surface()
        if surface is None:
            return []
        # What a plane is given first is its black ground, no picture of any item.
        ground = 1 if surface in self._parents else 0
        return self.surfaces[surface][ground:]

    def pictures(self):
        """When each picture of the film was presented."""
        return [stamp for _, stamp in self._film()]

    def first_shown(self):
        """When the first picture could be seen: not before its window had a picture, too."""
        first = self.pictures()[0]
        window = self.surfaces.get(self._parents.get(self.film_surface()), [])
        late = since(first, window[0][1]) if window else 0
        return first + late if late < WRAP_MS / 2 else first

    def pictures_between(self, began, ended):
        """How many were presented between two times of time.time()."""
        window = since(stamp_of(began), stamp_of(ended))
        return sum(since(stamp_of(began), picture) < window for picture in self.pictures())

    def intervals(self):
        """The time between each picture and the one before."""
        pictures = self.pictures()
        return [since(before, after) for before, after in zip(pictures, pictures[1:])]

    def changes(self):
        """For each change between two items that both had a picture, which of intervals() it is."""
        film = [number for number, _ in self._film()]
        after = [sum(number < item for number in film) for item in self._items]
        return [index - 1 for index in after if 0 < index < len(film)]

    def interface_after(self, stamp):
        """How long after `stamp` another surface than the film's had its next picture."""
        film = self.film_surface()
        later = [since(stamp, when) for surface, pictures in self.surfaces.items()
                 if surface != film for _, when in pictures if since(stamp, when) < WRAP_MS / 2]
        return min(later, default=None)


def since(before, after):
    """Milliseconds from one stamp to a later one."""
    return (after - before) % WRAP_MS


def stamp_of(seconds):
    """The trace's stamp of a time.time()."""
    return seconds * 1000 % WRAP_MS
