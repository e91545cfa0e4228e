"""Record framing and the binary file family, on files packed by hand."""

import functools
import os
import struct
import tempfile
import unittest
from pathlib import Path

import numpy as np

import torvex

MOST = 2147483639  # data bytes of a subrecord
DATA = Path(__file__).resolve().parents[1] / "results" / "data"


def record(*values):
    data = struct.pack("<" + "".join("i" if isinstance(v, int) else "f" for v in values), *values)
    return framed(len(data), data, len(data))


def framed(front, data, behind):
    return struct.pack("<i", front) + data + struct.pack("<i", behind)


def array(first, count):
    return record(*(float(first + n) for n in range(count)))


class InDirectory(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)

    def write(self, data, name="some.tuf"):
        path = self.directory / name
        path.write_bytes(data)
        return path

    def assertRefused(self, read, path, *words):
        """The message names the file and holds the words."""
        with self.assertRaises(torvex.FormatError) as caught:
            read(path)
        for word in (str(path), *words):
            self.assertIn(word, str(caught.exception))


class Framing(InDirectory):
    def bytes_of(self, data):
        records = torvex.read_records(self.write(data))
        return [b"".join(piece.tobytes() for piece in r.pieces) for r in records]

    def test_records_follow_each_other(self):
        self.assertEqual(self.bytes_of(framed(3, b"abc", 3) + framed(2, b"de", 2)), [b"abc", b"de"])

    def test_a_record_may_be_empty(self):
        self.assertEqual(self.bytes_of(framed(0, b"", 0) + framed(1, b"x", 1)), [b"", b"x"])

    def test_subrecords_are_joined_by_the_signs_of_their_lengths(self):
        cut = framed(-3, b"abc", 3) + framed(-3, b"def", -3) + framed(2, b"gh", -2)
        self.assertEqual(self.bytes_of(cut + framed(1, b"i", 1)), [b"abcdefgh", b"i"])

    def test_values_that_straddle_a_cut(self):
        data = struct.pack("<3f", 1.5, -2.0, 3.25)
        path = self.write(framed(-6, data[:6], 6) + framed(6, data[6:], -6))
        values = torvex.read_records(path)[0].values("<f4", 3, "three reals")
        self.assertEqual(values.tolist(), [1.5, -2.0, 3.25])

    def test_records_that_a_fortran_runtime_cut_into_sixteen_bytes(self):
        records = torvex.read_records(DATA / "cut_records.bin")
        for written, count in zip(records, (0, 3, 4, 5, 8, 9, 12)):
            self.assertEqual(written.values("<i4", count, "").tolist(), list(range(1, count + 1)))
        self.assertEqual(len(records), 8)

    def test_whole_records_are_mapped_and_not_copied(self):
        written = torvex.read_records(self.write(record(1.0, 2.0)))[0]
        self.assertTrue(np.shares_memory(written.values("<f4", 2, ""), written.pieces[0]))

    def sparse(self, *parts):
        """A file of lengths (int) and of holes that stand for so many bytes (range)."""
        path = self.directory / "large.tuf"
        with path.open("wb") as out:
            for part in parts:
                if isinstance(part, range):
                    out.seek(len(part), os.SEEK_CUR)
                else:
                    out.write(struct.pack("<i", part))
        return path

    def test_the_largest_subrecord(self):
        records = torvex.read_records(self.sparse(MOST, range(MOST), MOST))
        self.assertEqual([r.nbytes for r in records], [MOST])

    def test_one_byte_more_is_cut(self):
        path = self.sparse(-MOST, range(MOST), MOST, 1, range(1), -1, 4, range(4), 4)
        records = torvex.read_records(path)
        self.assertEqual([r.nbytes for r in records], [MOST + 1, 4])
        self.assertEqual(len(records[0].pieces), 2)

    def test_a_length_that_no_subrecord_has(self):
        self.assertRefused(torvex.read_records, self.sparse(MOST + 1, range(8)), str(MOST))
        self.assertRefused(torvex.read_records, self.sparse(-(2**31), range(8)), str(MOST))

    def test_an_empty_file(self):
        self.assertRefused(torvex.read_records, self.write(b""), "empty")

    def test_a_missing_file(self):
        with self.assertRaisesRegex(FileNotFoundError, "nothing.tuf"):
            torvex.read_records(self.directory / "nothing.tuf")

    def test_every_truncation_is_refused(self):
        whole = framed(-4, b"abcd", 4) + framed(3, b"efg", -3) + framed(2, b"hi", 2)
        ends = (23, len(whole))  # behind the first and the second record
        for size in range(1, len(whole)):
            if size not in ends:
                with self.subTest(size=size):
                    number = 1 if size < ends[0] else 2
                    self.assertRefused(
                        torvex.read_records,
                        self.write(whole[:size]),
                        f"ends at byte {size}",
                        f"record {number}",
                    )

    def test_a_record_that_never_ends(self):
        self.assertRefused(torvex.read_records, self.write(framed(-4, b"abcd", 4)), "record 1")

    def test_wrong_lengths_behind(self):
        for behind in (3, 5, -4, 0):
            with self.subTest(behind=behind):
                path = self.write(framed(4, b"abcd", behind))
                self.assertRefused(torvex.read_records, path, "byte 8", str(behind), "expected 4")

    def test_a_second_subrecord_that_denies_the_first(self):
        path = self.write(framed(-4, b"abcd", 4) + framed(3, b"efg", 3))
        self.assertRefused(torvex.read_records, path, "byte 19", "expected -3")

    def test_a_first_subrecord_that_claims_one_before(self):
        path = self.write(framed(-4, b"abcd", -4) + framed(3, b"efg", -3))
        self.assertRefused(torvex.read_records, path, "byte 8", "expected 4")


START = "u v w p tke ted".split()
RESULT = START + "flxU flxV flxW vis pp".split()


class Files(InDirectory):
    def three(self, file_id, names, behind=b"", extents=(2, 3, 4)):
        """Array m of the names holds 100*m, 100*m + 1, ..."""
        count = extents[0] * extents[1] * extents[2]
        arrays = b"".join(array(100 * m, count) for m, _ in enumerate(names))
        return record(file_id) + record(*extents) + arrays + behind

    def assertNumbered(self, file, names):
        self.assertEqual(list(file.arrays), list(names))
        for m, name in enumerate(names):
            # i runs fastest: value 100*m + i + 2*(j + 3*k).
            i, j, k = np.indices((2, 3, 4))
            np.testing.assert_array_equal(file[name], 100 * m + i + 2 * (j + 3 * k), name)
            self.assertTrue(file[name].flags.f_contiguous)

    def test_nodes_and_centres(self):
        nodes = torvex.read_tuf(self.write(self.three(101, "xyz")), "xyz")
        self.assertNumbered(nodes, ("xn", "yn", "zn"))
        centres = torvex.read_tuf(self.write(self.three(103, "xyz")), "xyzc")
        self.assertNumbered(centres, ("xc", "yc", "zc"))

    def test_roughness(self):
        path = self.write(record(102) + record(3, 2) + array(1, 6))
        file = torvex.read_tuf(path, "z0")
        self.assertEqual(file.extents, (3, 2))
        self.assertEqual(file["z0"].tolist(), [[1, 4], [2, 5], [3, 6]])

    def test_start_fields(self):
        file = torvex.read_tuf(self.write(self.three(111, START)), "vpkeinp")
        self.assertNumbered(file, START)

    def test_results_of_each_family(self):
        tail = record(480) + record(0.25)
        for file_id, further in ((112, []), (122, ["lm"]), (132, ["lm", "tkl", "viskl"])):
            with self.subTest(id=file_id):
                extra = b"".join(array(1100 + 100 * m, 24) for m, _ in enumerate(further))
                file = torvex.read_tuf(self.write(self.three(file_id, RESULT, tail + extra)))
                self.assertNumbered(file, RESULT + further)
                self.assertEqual((file.id, file.iteration, file.residual), (file_id, 480, 0.25))

    def test_each_field_is_an_attribute_of_a_direction(self):
        names = [field.name for field in torvex.FIELDS if 112 in field.files]
        self.assertEqual(names, RESULT)
        self.assertLessEqual(set(names), torvex.Direction.__annotations__.keys())
        self.assertTrue(all(field.unit and field.long_name for field in torvex.FIELDS))

    def test_a_result_that_a_fortran_runtime_wrote(self):
        file = torvex.read_tuf(DATA / "vpkeout_00480.tuf", "vpkeout")
        self.assertEqual((file.id, file.extents, file.iteration), (132, (3, 2, 2), 480))

    def test_canopy(self):
        names = ("gp_cf", "gp_density", "gp_length")
        whole = self.three(104, names, array(7, 6))
        file = torvex.read_tuf(self.write(whole), "ccd")
        self.assertEqual(file["gp_z0"].tolist(), [[7, 9, 11], [8, 10, 12]])
        self.assertEqual(file["gp_length"][1, 2, 3], 200 + 23)

    def test_canopy_without_roughness(self):
        names = ("gp_cf", "gp_density", "gp_length")
        file = torvex.read_tuf(self.write(self.three(104, names)), "ccd")
        self.assertNumbered(file, names)

    def test_an_array_cut_into_subrecords(self):
        data = struct.pack("<24f", *range(24))
        cut = framed(-50, data[:50], 50) + framed(-40, data[50:90], -40) + framed(6, data[90:], -6)
        path = self.write(record(103) + record(2, 3, 4) + array(0, 24) + cut + array(0, 24))
        file = torvex.read_tuf(path)
        np.testing.assert_array_equal(file["yc"], file["xc"])

    def test_an_array_that_is_not_there(self):
        file = torvex.read_tuf(self.write(self.three(103, "xyz")))
        with self.assertRaisesRegex(KeyError, "no array u, only xc, yc, zc"):
            file["u"]

    def test_wrong_identifiers(self):
        read_result = functools.partial(torvex.read_tuf, kind="vpkeout")
        path = self.write(self.three(103, "xyz"))
        self.assertRefused(read_result, path, "103", "expected 112 or 122 or 132 (vpkeout)")
        self.assertRefused(torvex.read_tuf, self.write(self.three(105, "xyz")), "105", "101 or")
        self.assertRefused(torvex.read_tuf, self.write(record(103, 1)), "record 1", "expected 4")

    def test_wrong_extents(self):
        for extents in ((2, 3, 5), (2, 3, 3)):
            data = self.three(103, "xyz").replace(record(2, 3, 4), record(*extents))
            self.assertRefused(torvex.read_tuf, self.write(data), "record 3", "96 bytes", "xc")
        data = record(103) + record(0, 3, 4) + array(0, 0) * 3
        self.assertRefused(torvex.read_tuf, self.write(data), "(0, 3, 4)", "positive")
        data = record(103) + record(2, 3) + array(0, 6) * 3
        self.assertRefused(torvex.read_tuf, self.write(data), "record 2", "expected 12")

    def test_records_missing_or_too_many(self):
        self.assertRefused(torvex.read_tuf, self.write(record(103)), "1 records", "expected 5")
        path = self.write(self.three(103, "xyz", record(1)))
        self.assertRefused(torvex.read_tuf, path, "6 records", "expected 5")
        self.assertRefused(torvex.read_tuf, self.write(self.three(104, "xy")), "4 records")

    def test_arrays_are_not_to_be_written(self):
        file = torvex.read_tuf(self.write(self.three(103, "xyz")))
        with self.assertRaises(ValueError):
            file["xc"][0, 0, 0] = 1


if __name__ == "__main__":
    unittest.main()
