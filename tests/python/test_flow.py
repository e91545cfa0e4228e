"""Quantities at a height and at points, back to the formulas that the records were made from."""

import math
import tempfile
import unittest
from pathlib import Path

import numpy as np

import synthetic_run
import torvex
from synthetic_run import Z0, value
from torvex.flow import Cells

ANGLES = (0.0, 22.5, 140.3, 270.0)
# Longitude and latitude of the centre, the key GS, radius and squared eccentricity.
F = 1 / 298.25723
CENTRES = ((8.0, 47.0, 3, 6378137.0, 2 * F - F * F), (-70.0, -33.0, 0, 6378136.0, 0.00669447))
POINTS = ((0.0, 0.0), (123.0, -57.0), (-310.0, 205.0), (66.6, 400.0))  # east and north [m]


def degree_lengths(latitude, radius, e2):
    """East and north, from the movement of a point of the ellipsoid in space."""

    def point(longitude, latitude):
        lon, lat = math.radians(longitude), math.radians(latitude)
        n = radius / math.sqrt(1 - e2 * math.sin(lat) ** 2)
        return np.array(
            (
                n * math.cos(lat) * math.cos(lon),
                n * math.cos(lat) * math.sin(lon),
                n * (1 - e2) * math.sin(lat),
            )
        )

    step = 1e-3
    east = point(step, latitude) - point(-step, latitude)
    north = point(0, latitude + step) - point(0, latitude - step)
    return np.linalg.norm(east) / (2 * step), np.linalg.norm(north) / (2 * step)


class InDirectory(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)

    def direction(self, angle, centre=(8.0, 47.0), geodetic_system=3):
        synthetic_run.write(self.directory, angle, centre, geodetic_system)
        return torvex.Direction(self.directory, angle)


class Geodesy(unittest.TestCase):
    def test_degree_lengths_of_the_ellipsoid(self):
        # Of WGS 84, as printed in tables [km].
        for latitude, east, north in (
            (0, 111.320, 110.574),
            (45, 78.847, 111.132),
            (60, 55.800, 111.412),
            (-60, 55.800, 111.412),
        ):
            found = torvex.metres_per_degree(latitude, 3)
            np.testing.assert_allclose(found, (1000 * east, 1000 * north), atol=0.6)

    def test_systems(self):
        for system, radius, f in ((1, 6377397.0, 1 / 299.1528), (2, 6378137.0, F)):
            expected = degree_lengths(35.5, radius, 2 * f - f * f)
            np.testing.assert_allclose(torvex.metres_per_degree(35.5, system), expected, rtol=1e-9)
        expected = degree_lengths(35.5, 6378136.0, 0.00669447)
        np.testing.assert_allclose(torvex.metres_per_degree(35.5), expected, rtol=1e-9)


class Points(InDirectory):
    """Four directions, two latitudes: what is found at a longitude and latitude."""

    def each(self):
        for lon, lat, system, radius, e2 in CENTRES:
            per_lon, per_lat = degree_lengths(lat, radius, e2)
            for angle in ANGLES:
                d = self.direction(angle, (lon, lat), system)
                for height in (10.0, 47.0, 200.0):
                    for east, north in POINTS:
                        with self.subTest(lat=lat, angle=angle, height=height, east=east):
                            flow = d.flow_at(
                                height,
                                longitude=lon + east / per_lon,
                                latitude=lat + north / per_lat,
                            )
                            yield d, flow, east, north, height

    def inflow(self, d, height):
        """East and north wind of the inflow column."""
        corner = synthetic_run.east_north(d.angle, synthetic_run.X[0], synthetic_run.Y[0])
        return value("east", *corner, height), value("north", *corner, height)

    def test_vectors_and_scalars(self):
        for _, flow, east, north, height in self.each():
            for found, part in (
                (flow.wind_east, "east"),
                (flow.wind_north, "north"),
                (flow.wind_up, "up"),
                (flow.p, "p"),
                (flow.tke, "tke"),
                (flow.ground, "ground"),
            ):
                expected = value(part, east, north, height)
                self.assertAlmostEqual(float(found), expected, delta=2e-4, msg=part)
            self.assertAlmostEqual(float(flow.z0), Z0, delta=1e-6)

    def test_derived_quantities(self):
        for d, flow, east, north, height in self.each():
            e, n = value("east", east, north, height), value("north", east, north, height)
            free_east, free_north = self.inflow(d, height)
            self.assertAlmostEqual(float(flow.speed), math.hypot(e, n), delta=1e-4)
            up = math.hypot(e, n) / math.hypot(free_east, free_north)
            self.assertAlmostEqual(float(flow.speed_up), up, delta=1e-4)
            intensity = math.sqrt(2 / 3 * value("tke", east, north, height)) / math.hypot(e, n)
            self.assertAlmostEqual(float(flow.turbulence_intensity), intensity, delta=1e-4)
            angle = math.degrees(math.atan2(value("up", east, north, height), math.hypot(e, n)))
            self.assertAlmostEqual(float(flow.flow_angle), angle, delta=2e-3)
            # By the compass, on which clockwise is positive.
            turn = math.degrees(math.atan2(e, n) - math.atan2(free_east, free_north))
            turn = (turn + 180) % 360 - 180
            self.assertAlmostEqual(float(flow.turn), turn, delta=2e-3)
            low, high = (
                math.hypot(value("east", east, north, h), value("north", east, north, h))
                for h in (height / math.sqrt(2), height * math.sqrt(2))
            )
            shear = math.log(high / low) / math.log(2)
            self.assertAlmostEqual(float(flow.shear), shear, delta=2e-4)

    def test_columns_stand_where_they_are(self):
        for lon, lat, system, radius, e2 in CENTRES:
            per_lon, per_lat = degree_lengths(lat, radius, e2)
            for angle in ANGLES:
                d = self.direction(angle, (lon, lat), system)
                x, y, _ = synthetic_run.places()
                east, north = synthetic_run.east_north(angle, x, y)
                np.testing.assert_allclose((d.longitude - lon) * per_lon, east, atol=1e-3)
                np.testing.assert_allclose((d.latitude - lat) * per_lat, north, atol=1e-3)

    def test_points_come_as_arrays_too(self):
        d = self.direction(22.5)
        east, north = np.array(POINTS).T
        flow = d.flow_at(47.0, east=east, north=north)
        np.testing.assert_allclose(flow.wind_east, value("east", east, north, 47.0), atol=2e-4)
        by_degrees = d.flow_at(
            47.0, **dict(zip(("longitude", "latitude"), d.case.longitude_latitude(east, north)))
        )
        np.testing.assert_allclose(by_degrees.turn, flow.turn, atol=1e-9)
        flow = d.flow_at(47.0, east=east, north=100.0)
        np.testing.assert_allclose(flow.wind_up, value("up", east, 100.0, 47.0), atol=2e-4)

    def test_maps_are_the_same_quantities(self):
        d = self.direction(140.3)
        x, y, _ = synthetic_run.places()
        east, north = synthetic_run.east_north(140.3, x, y)
        e, n = value("east", east, north, 47.0), value("north", east, north, 47.0)
        speed, tke = np.hypot(e, n), value("tke", east, north, 47.0)
        np.testing.assert_allclose(d.speed_at_height(47.0), speed, atol=1e-4)
        np.testing.assert_allclose(d.speed_up(47.0), speed / speed[0, 0], atol=1e-4)
        expected = np.sqrt(2 / 3 * tke) / speed
        np.testing.assert_allclose(d.turbulence_intensity(47.0), expected, atol=1e-4)
        expected = np.degrees(np.arctan2(value("up", east, north, 47.0), speed))
        np.testing.assert_allclose(d.flow_angle(47.0), expected, atol=2e-3)
        np.testing.assert_allclose(d.turn(47.0)[3, 4], d.flow(47.0).turn[3, 4])
        self.assertEqual(d.shear(47.0).shape, x.shape)

    def test_nothing_is_extrapolated_sideways(self):
        d = self.direction(270.0)  # x is east, y is north
        edge = d.flow_at(47.0, east=[-900.0, 800.0, 0.0, 0.0], north=[0.0, 0.0, -700.0, 710.0])
        self.assertTrue(np.isfinite(edge.speed).all())
        beyond = d.flow_at(47.0, east=[-900.1, 800.1, 0.0, 0.0], north=[0.0, 0.0, -700.1, 710.1])
        for values in (beyond.speed, beyond.ground, beyond.z0, beyond.shear, beyond.tke):
            self.assertTrue(np.isnan(values).all())

    def test_a_point_is_given_in_one_way(self):
        d = self.direction(270.0)
        for given in (
            {},
            {"east": 1.0},
            {"east": 1.0, "latitude": 47.0},
            {"east": 1.0, "north": 1.0, "longitude": 8.0, "latitude": 47.0},
        ):
            with self.assertRaisesRegex(TypeError, "east and north"):
                d.flow_at(47.0, **given)

    def test_lines_that_do_not_rise(self):
        path = self.directory / "restart-270_0-xyzc.tuf"
        d = self.direction(270.0)
        turned = [synthetic_run.record(a) for a in (d.xc[::-1], d.yc, d.zc)]
        path.write_bytes(synthetic_run.tuf(103, d.xc.shape, *turned))
        (self.directory / "restart-270_0-vpkeout_00009.tuf").touch()
        with self.assertRaisesRegex(ValueError, "do not rise"):
            torvex.Direction(self.directory, 270).flow_at(47.0, east=0.0, north=0.0)


class NearTheGround(InDirectory):
    """Below the second centre, which is 6 m above the ground at x = 0 (array index 4)."""

    def setUp(self):
        super().setUp()
        self.d = self.direction(270.0)
        self.at = (4, 3)
        self.east, self.north = 0.0, float(synthetic_run.Y[3])

    def second(self, part):
        return value(part, self.east, self.north, 6.0)

    def test_velocity_falls_with_the_logarithm(self):
        # ln(3/0.1)/ln(6/0.1) = 3.401197/4.094345, ln(0.3/0.1)/ln(60) = 1.098612/4.094345
        for height, law in ((3.0, 0.830706), (0.3, 0.268324), (6.0, 1.0)):
            flow = self.d.flow_at(height, east=self.east, north=self.north)
            for found, part in (
                (flow.wind_east, "east"),
                (flow.wind_north, "north"),
                (flow.wind_up, "up"),
            ):
                self.assertAlmostEqual(float(found), law * self.second(part), delta=2e-5)
            np.testing.assert_allclose(
                self.d.flow(height).u[self.at], law * self.second("east"), atol=2e-5
            )

    def test_other_quantities_stay(self):
        flow = self.d.flow_at(3.0, east=self.east, north=self.north)
        self.assertAlmostEqual(float(flow.p), self.second("p"), delta=2e-5)
        self.assertAlmostEqual(float(flow.tke), self.second("tke"), delta=2e-5)
        there = self.d.flow_at(6.0, east=self.east, north=self.north)
        self.assertAlmostEqual(float(flow.flow_angle), float(there.flow_angle), delta=1e-6)
        # The definition holds where the speed falls.
        intensity = math.sqrt(2 / 3 * self.second("tke")) / float(flow.speed)
        self.assertAlmostEqual(float(flow.turbulence_intensity), intensity, delta=1e-5)

    def test_shear_of_the_logarithm(self):
        # Both heights below the second centre: ln(ln(30 r)/ln(30/r))/ln 2 with r = sqrt(2).
        flow = self.d.flow_at(3.0, east=self.east, north=self.north)
        r = math.sqrt(2)
        expected = math.log(math.log(30 * r) / math.log(30 / r)) / math.log(2)
        self.assertAlmostEqual(float(flow.shear), expected, delta=1e-6)

    def test_nothing_within_two_roughness_lengths(self):
        inside = self.d.flow(0.19)
        for values in (
            inside.u,
            inside.v,
            inside.w,
            inside.speed,
            inside.turbulence_intensity,
            inside.speed_up,
            inside.shear,
        ):
            self.assertTrue(np.isnan(values).all())
        self.assertTrue(np.isfinite(inside.tke).all())
        above = self.d.flow(0.21)
        self.assertTrue(np.isfinite(above.speed).all())
        self.assertTrue(np.isnan(above.shear).all())  # 0.21/sqrt(2) m is too low
        self.assertTrue(np.isnan(self.d.flow(0.0).speed).all())

    def test_profile_of_a_column(self):
        profile = self.d.profile(*self.at)
        inflow = self.d.profile(0, 0)
        for height in (3.0, 20.0):
            found = profile.flow(height, inflow, angle=270.0)
            whole = self.d.flow(height)
            for name in (
                "speed",
                "speed_up",
                "turbulence_intensity",
                "turn",
                "flow_angle",
                "shear",
                "wind_east",
                "wind_north",
                "ground",
            ):
                self.assertAlmostEqual(
                    float(getattr(found, name)),
                    float(getattr(whole, name)[self.at]),
                    delta=1e-5,
                    msg=name,
                )
        self.assertAlmostEqual(
            float(profile.flow(20.0).wind_up), value("up", self.east, self.north, 20.0), delta=1e-5
        )

    def test_profile_without_roughness_or_inflow(self):
        profile = self.d.profile(*self.at)._replace(z0=math.nan)
        self.assertTrue(math.isnan(profile.flow(3.0).speed))
        self.assertFalse(math.isnan(profile.flow(6.5).speed))
        self.assertFalse(math.isnan(profile.flow(3.0).tke))
        self.assertTrue(math.isnan(profile.flow(20.0).speed_up))
        self.assertTrue(math.isnan(profile.flow(20.0).turn))


class Tops(InDirectory):
    def test_columns_that_end_below(self):
        d = self.direction(270.0)
        x, _, height = synthetic_run.places()
        ends = height[:, :, -1]  # 464 to 551 m, rising with x
        found = d.flow(500.0)
        np.testing.assert_array_equal(np.isnan(found.speed), ends < 500)
        self.assertTrue(np.isnan(found.shear).all())
        # Between columns of which one ends below: nothing, unless it has no weight.
        below, above = synthetic_run.X[2], synthetic_run.X[3]  # 490 and 502 m
        self.assertTrue(np.isnan(d.flow_at(500.0, east=0.5 * (below + above), north=0.0).speed))
        self.assertTrue(np.isfinite(d.flow_at(500.0, east=above, north=0.0).speed))

    def test_heights_that_no_column_has(self):
        d = self.direction(270.0)
        for height, words in (
            (560.0, "no column reaches"),
            (-1.0, "0 or more"),
            (math.nan, "0 or more"),
            (math.inf, "0 or more"),
        ):
            with self.assertRaisesRegex(ValueError, words):
                d.flow(height)


class Sideways(unittest.TestCase):
    def test_a_column_without_weight_does_not_count(self):
        line = np.array([0.0, 10.0])
        values = np.array([[1.0, 3.0], [math.nan, math.nan]])
        cells = Cells.of_points(line, line, np.array([0.0, 0.1]), np.array([5.0, 5.0]))
        np.testing.assert_array_equal(cells.bilinear(values), [2.0, math.nan])


class Roughness(InDirectory):
    def test_between_columns_the_drag_is_averaged(self):
        d = self.direction(270.0)
        z0 = np.full(d.z0.shape, 0.03)
        z0[5:] = 0.3
        (self.directory / "restart-270_0-z0.tuf").write_bytes(
            synthetic_run.tuf(102, z0.shape, synthetic_run.record(z0))
        )
        d = torvex.Direction(self.directory, 270.0)
        middle = d.flow_at(20.0, east=0.5 * synthetic_run.X[5], north=0.0)
        # R = 1/ln^2(10/z0): 0.0296330 and 0.0813276, mean 0.0554803; 10/exp(1/sqrt(R))
        self.assertAlmostEqual(float(middle.z0), 0.143283, delta=2e-6)


if __name__ == "__main__":
    unittest.main()
