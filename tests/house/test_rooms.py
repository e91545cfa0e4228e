"""The order of the rooms: what each folder of src/ includes, against the table of docs/developer.md.

Every room has a row, a row names each room that its files include, and no chain of rows leads back to
where it began, so that dependencies point one way.
"""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SOURCES = ROOT / "src"
INCLUDE = re.compile(r'^\s*#\s*include\s+"(.+)/[^/"]+"', re.MULTILINE)


def rooms_included():
    """What the files of each room include, without the room itself: {room: {room: file}}."""
    rooms = {}
    for file in sorted(SOURCES.rglob("*.?pp")):
        room = file.parent.relative_to(SOURCES).as_posix()
        found = rooms.setdefault(room, {})
        for other in INCLUDE.findall(file.read_text(encoding="utf-8")):
            if other != room:
                found.setdefault(other, file.relative_to(ROOT).as_posix())
    return rooms


def rooms_allowed():
    """The column "may include" of the table of rooms."""
    text = (ROOT / "docs/developer.md").read_text(encoding="utf-8")
    section = text.split("\n## Rooms\n", 1)[1].split("\n## ", 1)[0]
    rows = {}
    for line in section.splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if len(cells) == 4 and cells[0].startswith("`"):
            rows[cells[0].strip("`")] = set(re.findall(r"`([^`]+)`", cells[2]))
    return rows


# Two folders that are one library of equations, which call each other both ways.
ONE_HOUSE = {"solver", "solver/turbulence"}


class Rooms(unittest.TestCase):
    def test_table_has_every_room_and_no_other(self):
        self.assertEqual(set(rooms_allowed()), set(rooms_included()))

    def test_rooms_include_what_the_table_allows(self):
        allowed = rooms_allowed()
        for room, included in rooms_included().items():
            for other, file in included.items():
                self.assertIn(other, allowed[room], f"{file}: {room} includes {other}")

    def test_table_allows_nothing_that_no_room_needs(self):
        included = rooms_included()
        for room, others in rooms_allowed().items():
            self.assertEqual(others - set(included[room]), set(), room)

    def test_dependencies_point_one_way(self):
        allowed = rooms_allowed()

        def below(room, passed):
            self.assertNotIn(room, passed, " -> ".join([*passed, room]))
            for other in allowed[room]:
                if not {room, other} <= ONE_HOUSE:
                    below(other, [*passed, room])

        for room in allowed:
            below(room, [])


if __name__ == "__main__":
    unittest.main()
