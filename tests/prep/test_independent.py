"""torvex-prep against other software: GDAL, PROJ, VTK, and the same formulas in Python.

Every test is skipped, with a line that says so, where the package it leans on is missing.
"""

import os
import random
import subprocess
import tempfile
import unittest

import numpy as np

import torvex


def package(name):
    try:
        return __import__(name, fromlist=["*"])
    except ImportError:
        return None


gdal = package("osgeo.gdal")
ogr = package("osgeo.ogr")
pyproj = package("pyproj")
vtk = package("vtk")
for part in (gdal, ogr):
    if part:
        part.UseExceptions()

PREP = os.environ["TORVEX_PREP"]
TORVEX = os.environ["TORVEX_PROGRAM"]
EXAMPLES = os.environ["TORVEX_EXAMPLES"]

D_LON, D_LAT = 0.075, 0.05  # minutes between the samples of a tile

# The ninth plane zone on its own ellipsoid.
ZONE_9 = "+proj=tmerc +lat_0=36 +lon_0=139.8333333333333333 +k=0.9999 +a=6377397.155 +rf=299.152813"


def run(arguments, directory, program=PREP):
    done = subprocess.run([program] + arguments, cwd=directory, capture_output=True, text=True)
    if done.returncode != 0:
        raise AssertionError(f"{arguments}: {done.returncode}\n{done.stdout}{done.stderr}")
    return done


def read_map(path):
    """Samples in minutes of arc, values (row, column) from the south-west."""
    found = torvex.read_map(path)
    return {
        "lon": 60 * found.longitude,
        "lat": 60 * found.latitude,
        "d_lon": float(found.header["d_lon"]),
        "d_lat": float(found.header["d_lat"]),
        "values": found.values.T.astype(float),
    }


def turn(points):
    """Twice the area inside a ring, negative where it runs clockwise."""
    return sum(a[0] * b[1] - b[0] * a[1] for a, b in zip(points, points[1:]))


def R(z0):
    return 1 / np.log(10 / np.minimum(z0, 9.999)) ** 2


def Z(r):
    return 10 / np.exp(1 / np.sqrt(r))


class InDirectory(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.directory = self.temporary.name
        os.mkdir(self.path("db"))

    def tearDown(self):
        self.temporary.cleanup()

    def path(self, name):
        return os.path.join(self.directory, name)

    def write(self, name, text):
        with open(self.path(name), "w") as file:
            file.write(text)

    def settings(self, text):
        self.write(
            "trdb2tvm.tin",
            "&TRDB2TVM\n DB_DR = 'db'\n WE_LENGTH = 1000\n NS_LENGTH = 800\n"
            " MAX_DXY = 50\n" + text + "\n/\n",
        )


@unittest.skipUnless(gdal, "osgeo (python3-gdal) is missing: no comparison with gdalwarp")
class MosaicAgainstGdalwarp(InDirectory):
    def test_finer_grid_over_two_grids(self):
        rng = np.random.default_rng(1)
        cell = 1 / 120
        for name, west, columns in (("a.asc", 7.0, 30), ("b.asc", 7.0, 80)):
            values = 200 + 50 * rng.random((70, columns))
            rows = "\n".join(" ".join(f"{v:.3f}" for v in row) for row in values)
            self.write(
                "db/" + name,
                f"ncols {columns}\nnrows 70\nxllcorner {west}\n"
                f"yllcorner 46.0\ncellsize {cell:.12f}\n"
                f"NODATA_value -9999\n{rows}\n",
            )
        self.write("db/index.txt", "a.asc\nb.asc\n")
        # The centre lies near the eastern edge of the first grid, so that both are used.
        self.settings(
            " CENT_LON = 7, 15, 0\n CENT_LAT = 46, 17, 0\n TERRAIN_MODE = 2\n"
            " ROUGHNESS_MODE = 0\n D_LON = 0.11\n D_LAT = 0.13"
        )
        run(["maps"], self.directory)
        ours = read_map(self.path("terrain.map"))
        lon, lat = ours["lon"] / 60, ours["lat"] / 60
        dx, dy = ours["d_lon"] / 60, ours["d_lat"] / 60
        bounds = (lon[0] - dx / 2, lat[0] - dy / 2, lon[-1] + dx / 2, lat[-1] + dy / 2)

        def warped(name):
            out = gdal.Warp(
                "",
                self.path("db/" + name),
                format="MEM",
                outputBounds=bounds,
                width=len(lon),
                height=len(lat),
                resampleAlg="bilinear",
                errorThreshold=0,
                srcSRS="EPSG:4326",
                dstSRS="EPSG:4326",
                outputType=gdal.GDT_Float64,
                dstNodata=-1e9,
            )
            return out.ReadAsArray()[::-1]

        a, b = warped("a.asc"), warped("b.asc")
        first = lon[None, :] <= 7.0 + 29.5 * cell  # up to the last centre of the first grid
        theirs = np.where(first & (a > -1e8), a, b)
        self.assertTrue(first.any() and not first.all())
        self.assertLess(np.abs(ours["values"] - theirs).max(), 0.052)  # written to 0.1 m


def case_text(extra=""):
    return (
        "&NML_RUN /\n"
        "&NML_CASEFILE BASIC_H_FILE = 'terrain.map', BASIC_Z0_FILE = 'roughness.map',\n"
        "  CENT_LON = 139, 48, 45, CENT_LAT = 35, 42, 30, WE_LENGTH = 400, NS_LENGTH = 400,\n"
        "  WD_TYPE = 1, N_WIND_DIRECTION = 1, WIND_DIRECTION_ANGLE = 240, MIN_DXY = 40,\n"
        "  MAX_DXY = 50, MIN_DXY_RAD = 200, MESH_HRATIO = 1.2, MIN_DZ = 20, MESH_VRATIO = 1.3 /\n"
        "&NML_MONITOR MONITOR_STEP = 10 /\n&NML_ER /\n&NML_BOUNDARY_TREATMENT /\n"
        "&NML_NAVIER_STOKES /\n&NML_NUMERICAL_SOLVER MAXIT = 0 /\n&NML_SITE /\n" + extra
    )


def tile_base(row, column):
    return column * 7.5 + 6000 + D_LON / 2, row * 5 + D_LAT / 2


class Tiles(InDirectory):
    """Nine tiles round 139 48 45 E, 35 42 30 N: random land use and a hilly plane."""

    def setUp(self):
        super().setUp()
        for table in ("conv_table.tin", "cnpy_conv_table.tin"):
            with open(os.path.join(EXAMPLES, "tables", table)) as file:
                self.write(table, file.read())
        rng = np.random.default_rng(7)
        self.codes = {}
        for row in (427, 428, 429):
            for column in (317, 318, 319):
                lon, lat = tile_base(row, column)
                codes = rng.integers(1, 16, size=(100, 100))
                self.codes[row, column] = codes
                name = f"{row // 8:02d}{column // 8:02d}{row % 8}{column % 8}"
                lons = lon + D_LON * np.arange(100)
                lats = lat + D_LAT * np.arange(100)
                h = 50 + 20 * np.sin(lons[None, :] / 2) * np.cos(lats[:, None] / 3)
                head = (
                    "<TORVEX_MAP lon-lat>\nn_lon = 100, n_lat = 100\nd_lon = 0.075, d_lat = 0.05\n"
                    f"base_longitude = {int(lon // 60)} {lon % 60:.4f}\n"
                    f"base_latitude = {int(lat // 60)} {lat % 60:.4f}\n"
                    "geodetic_system = 'TKY'\n--DATA--\n"
                )
                for suffix, values, form in (("_lu", codes, "%d"), ("_h", h, "%.2f")):
                    rows = "\n".join(" ".join(form % v for v in line) for line in values)
                    self.write(f"db/{name}{suffix}.map", head + rows + "\n")

    def code_at(self, lon, lat):
        """Land-use code of the sample at (lon, lat) in minutes."""
        row, column = int(lat // 5), int((lon - 6000) // 7.5)
        base_lon, base_lat = tile_base(row, column)
        return self.codes[row, column][
            round((lat - base_lat) / D_LAT), round((lon - base_lon) / D_LON)
        ]


def example_tables():
    """Roughness of a code, from the example tables."""
    roughness, classes = {}, {}
    with open(os.path.join(EXAMPLES, "tables", "conv_table.tin")) as file:
        for line in file:
            if line.strip().startswith("Z00("):
                key, value = line.split("!")[0].split("=")
                roughness[int(key.strip()[4:-1])] = float(value)
    with open(os.path.join(EXAMPLES, "tables", "cnpy_conv_table.tin")) as file:
        next(file)
        for line in file:
            before, name, after = line.split("'")
            classes[int(float(after.split()[0]))] = int(before)
    return {code: roughness[row] for code, row in classes.items()}


@unittest.skipUnless(ogr, "osgeo (python3-gdal) is missing: no shapefile of another writer")
class ForestOverLandUse(Tiles):
    def write_forest(self, srs_text, transform=lambda lon, lat: (lon, lat)):
        """Three woods drawn by GDAL, one with a hole; returned as geometries in degrees."""
        rings = [
            [(139.795, 35.700), (139.810, 35.718), (139.8222, 35.7051), (139.808, 35.7093)],
            [(139.815, 35.715), (139.818, 35.722), (139.824, 35.719)],
            [(139.7985, 35.6955), (139.8013, 35.7031), (139.8067, 35.6989)],
        ]
        source = ogr.GetDriverByName("ESRI Shapefile").CreateDataSource(self.path("forest.shp"))
        layer = source.CreateLayer("forest", geom_type=ogr.wkbPolygon)
        layer.CreateField(ogr.FieldDefn("LU", ogr.OFTInteger))
        layer.CreateField(ogr.FieldDefn("H", ogr.OFTReal))
        woods = []
        for n, points in enumerate(rings):
            shapes = []
            for change in (lambda lon, lat: (lon, lat), transform):
                ring = ogr.Geometry(ogr.wkbLinearRing)
                for lon, lat in points + points[:1]:
                    ring.AddPoint_2D(*change(lon, lat))
                polygon = ogr.Geometry(ogr.wkbPolygon)
                polygon.AddGeometry(ring)
                shapes.append(polygon)
            feature = ogr.Feature(layer.GetLayerDefn())
            feature.SetGeometry(shapes[1])
            feature.SetField("LU", (5, 4, 13)[n])
            feature.SetField("H", 10.0 + n)
            layer.CreateFeature(feature)
            woods.append((shapes[0], (5, 4, 13)[n]))
        source = None
        return woods

    def compare(self, woods, tolerance):
        z0_of = example_tables()
        ours = read_map(self.path("roughness.map"))
        generator = random.Random(3)
        covered = 0
        for _ in range(1000):
            # Most of them round the woods.
            lon0, lat0 = ours["lon"], ours["lat"]
            i = generator.choice(np.flatnonzero((lon0 > 139.795 * 60) & (lon0 < 139.825 * 60)))
            j = generator.choice(np.flatnonzero((lat0 > 35.695 * 60) & (lat0 < 35.722 * 60)))
            lon, lat = lon0[i], lat0[j]
            west, east = (lon - D_LON / 2) / 60, (lon + D_LON / 2) / 60
            south, north = (lat - D_LAT / 2) / 60, (lat + D_LAT / 2) / 60
            cell = ogr.CreateGeometryFromWkt(
                f"POLYGON(({west:.14f} {south:.14f},{east:.14f} {south:.14f},"
                f"{east:.14f} {north:.14f},{west:.14f} {north:.14f},{west:.14f} {south:.14f}))"
            )
            share = r = 0.0
            for wood, code in woods:
                piece = wood.Intersection(cell)
                f = piece.GetArea() / cell.GetArea() if piece.GetDimension() == 2 else 0.0
                share += f
                r += f * R(z0_of[code])
            covered += share > 1e-6
            z0 = z0_of[self.code_at(lon, lat)]
            if share > 1:
                z0 = Z(r / share)
            elif share > 0:
                z0 = Z((1 - share) * R(z0) + r)
            self.assertAlmostEqual(
                ours["values"][j, i],
                max(z0, 1e-5),
                delta=tolerance(z0),
                msg=f"sample {i + 1}, {j + 1}, share {share}",
            )
        self.assertGreater(covered, 200)

    def test_a_thousand_samples(self):
        woods = self.write_forest("")
        self.write(
            "torvex.tin",
            case_text("&shp_parameters\ntrdb2shp_fn = 'forest.shp'\ntrdb2shp%dbf_luid = LU\n/\n"),
        )
        self.settings(
            " CENT_LON = 139, 48, 45\n CENT_LAT = 35, 42, 30\n TERRAIN_MODE = 0\n" " SHP_MODE = 1"
        )
        run(["maps"], self.directory)
        self.compare(woods, lambda z0: 6e-6 + 2e-4 * z0)

    @unittest.skipUnless(pyproj, "pyproj is missing: no plane coordinates of another maker")
    def test_the_same_woods_in_plane_and_metric_coordinates(self):
        systems = {
            9: ZONE_9,
            1009: "+proj=tmerc +lat_0=36 +lon_0=139.8333333333333333 +k=0.9999 +ellps=GRS80",
            154: "+proj=utm +zone=54 +ellps=WGS84",
        }
        for cs, text in systems.items():
            projection = pyproj.Proj(text)
            woods = self.write_forest("", lambda lon, lat: projection(lon, lat))
            self.write(
                "torvex.tin",
                case_text(
                    "&shp_parameters\ntrdb2shp_fn = 'forest.shp'\ntrdb2shp%dbf_luid = LU\n/\n"
                ),
            )
            self.settings(
                " CENT_LON = 139, 48, 45\n CENT_LAT = 35, 42, 30\n TERRAIN_MODE = 0\n"
                f" SHP_MODE = 1\n SHP_CS = {cs}"
            )
            run(["maps"], self.directory)
            # Straight lines of the plane bend by centimetres in degrees.
            self.compare(woods, lambda z0: 6e-6 + 1e-3 * z0)

    def test_the_check_shapefile_is_read_by_gdal(self):
        self.write_forest("")
        self.write(
            "torvex.tin",
            case_text(
                "&shp_parameters\ntrdb2shp_fn = 'forest.shp'\ntrdb2shp%dbf_luid = LU\n"
                "trdb2shp%dbf_h = H\n/\n"
            ),
        )
        cs_of = {"degrees": "", "plane": " SHP_CS = 9\n"}
        for kind, line in cs_of.items():
            if kind == "plane" and not pyproj:
                continue
            if kind == "plane":
                projection = pyproj.Proj(ZONE_9)
                self.write_forest("", lambda lon, lat: projection(lon, lat))
            self.settings(
                " CENT_LON = 139, 48, 45\n CENT_LAT = 35, 42, 30\n TERRAIN_MODE = 0\n"
                " SHP_MODE = 2\n" + line
            )
            run(["maps"], self.directory)
            ours = read_map(self.path("roughness.map"))
            source = ogr.Open(self.path("roughness_check_tvm.shp"))
            layer = source.GetLayer(0)
            self.assertEqual(layer.GetFeatureCount(), ours["values"].size)
            definition = layer.GetLayerDefn()
            fields = [definition.GetFieldDefn(n) for n in range(definition.GetFieldCount())]
            self.assertEqual(
                [f.GetName() for f in fields],
                ["POLYGON", "LandUseID", "Z0org", "Height", "RLS", "index_i", "index_j"],
            )
            for field in fields:
                if field.GetName() in ("Z0org", "Height", "RLS"):
                    self.assertEqual((field.GetWidth(), field.GetPrecision()), (16, 6))
                else:
                    self.assertEqual(field.GetPrecision(), 0)
            z0_of = example_tables()
            for n in random.Random(5).sample(range(layer.GetFeatureCount()), 300):
                feature = layer.GetFeature(n)
                i, j = feature["index_i"] - 1, feature["index_j"] - 1
                self.assertEqual(feature["POLYGON"], n + 1)
                self.assertEqual(n, j * ours["values"].shape[1] + i)
                lon, lat = ours["lon"][i], ours["lat"][j]
                self.assertAlmostEqual(feature["RLS"], ours["values"][j, i], delta=6e-6)
                self.assertAlmostEqual(feature["Z0org"], z0_of[self.code_at(lon, lat)], delta=1e-6)
                ring = feature.GetGeometryRef().GetGeometryRef(0)
                self.assertLess(turn(ring.GetPoints()), 0)
                corners = [
                    ((lon + a * D_LON / 2) / 60, (lat + b * D_LAT / 2) / 60)
                    for a, b in ((-1, -1), (-1, 1), (1, 1), (1, -1), (-1, -1))
                ]
                if kind == "plane":
                    corners = [projection(*corner) for corner in corners]
                limit = 1e-9 if kind == "degrees" else 1e-3
                self.assertEqual(ring.GetPointCount(), 5)
                for point, corner in zip(ring.GetPoints(), corners):
                    self.assertAlmostEqual(point[0], corner[0], delta=limit)
                    self.assertAlmostEqual(point[1], corner[1], delta=limit)
            source = layer = feature = None


class Previews(Tiles):
    def setUp(self):
        super().setUp()
        self.settings(" CENT_LON = 139, 48, 45\n CENT_LAT = 35, 42, 30")
        run(["maps"], self.directory)
        self.write("torvex.tin", case_text())

    @unittest.skipUnless(gdal, "osgeo (python3-gdal) is missing: no other reader of .GRD")
    def test_gdal_reads_both_grids(self):
        run(["preview"], self.directory)
        with open(self.path("view-map.dat")) as file:
            text = file.read()
        zone = text.split("##<<TORVEX_ZONE_RECORD_BEGIN>>\n")[1].split(
            "##<<TORVEX_ZONE_RECORD_END>>"
        )[0]
        head, rows = zone.split("\n", 1)
        ni, nj = int(head[7:11]), int(head[15:19])  # "zone i=....,  j=....,"
        rows = np.array(rows.split(), dtype=float).reshape(nj, ni, 4)
        for name, column, tolerance in (("TERRAIN.GRD", 2, 1e-3), ("ROUGH.GRD", 3, 1e-5)):
            grid = gdal.Open(self.path(name))
            self.assertEqual(grid.GetDriver().ShortName, "GSAG")
            self.assertEqual((grid.RasterXSize, grid.RasterYSize), (ni, nj))
            values = grid.ReadAsArray()[::-1]
            self.assertLess(np.abs(values - rows[:, :, column]).max(), tolerance)
            west, dx, _, north, _, dy = grid.GetGeoTransform()
            self.assertAlmostEqual(west + dx / 2, rows[0, 0, 0], delta=0.01)
            self.assertAlmostEqual(west + dx * (ni - 0.5), rows[0, -1, 0], delta=0.01)
            self.assertAlmostEqual(north + dy * (nj - 0.5), rows[0, 0, 1], delta=0.01)

    @unittest.skipUnless(vtk, "vtk (python3-vtk9) is missing: no other reader of .vtk")
    def test_vtk_reads_the_canopy(self):
        run([], self.directory, TORVEX)
        stem = "restart-240_0-"
        centres = self.cell_centres(stem)
        ni, nj, nk = centres.shape[:3]
        rng = np.random.default_rng(2)
        records = [np.zeros((ni, nj, nk), np.float32) for _ in range(3)]
        for field, scale in zip(records, (0.4, 0.1, 5.0)):
            field[4:9, 5:9, 1:4] = scale * rng.random((5, 4, 3))
        self.write_canopy(stem + "ccd.tuf", records)
        run(["export", "vtk"], self.directory)
        for k in (2, 3, 4):
            reader = vtk.vtkStructuredGridReader()
            reader.SetFileName(self.path(f"{stem}ccd-k{k:03d}.vtk"))
            reader.ReadAllScalarsOn()
            reader.Update()
            grid = reader.GetOutput()
            self.assertEqual(grid.GetDimensions(), (ni, nj, 1))
            for name, field in zip(("Cf", "pd", "rls"), records):
                array = grid.GetPointData().GetArray(name)
                values = np.array([array.GetValue(n) for n in range(ni * nj)]).reshape(nj, ni).T
                self.assertLess(np.abs(values - field[:, :, k - 1]).max(), 1e-6)
            for i, j in ((0, 0), (5, 6), (ni - 1, nj - 1)):
                point = grid.GetPoint(j * ni + i)
                for axis in range(3):
                    self.assertAlmostEqual(point[axis], centres[i, j, k - 1, axis], delta=1e-2)

    def cell_centres(self, stem):
        """(i, j, k, axis)"""
        file = torvex.read_tuf(self.path(stem + "xyzc.tuf"))
        return np.stack([file[name] for name in ("xc", "yc", "zc")], axis=-1)

    def write_canopy(self, name, records):
        """A canopy file: records of 4-byte words between their lengths."""
        ni, nj, nk = records[0].shape
        with open(self.path(name), "wb") as file:

            def record(data):
                mark = np.array([len(data)], "<i4").tobytes()
                file.write(mark + data + mark)

            record(np.array([104], "<i4").tobytes())
            record(np.array([ni, nj, nk], "<i4").tobytes())
            for field in records:
                record(field.astype("<f4").tobytes(order="F"))


if __name__ == "__main__":
    unittest.main()
