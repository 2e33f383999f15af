"""What Python adds to the library: arrays, failures, pickles, threads and forks."""

import ast
import copy
import inspect
import math
import multiprocessing
import os
import pathlib
import pickle
import subprocess
import sys
import tempfile
import threading
import unittest

import numpy as np

import nivora_cs
from nivora_cs import CoordSystem, Error, Transform

ZONE7 = 'CoordSys Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0'
PLACES = np.random.default_rng(7).uniform((36, 45), (42, 65), (5000, 2))


def systems():
    """One of each notation, and what is put on it."""
    yield CoordSystem("EPSG:32637")
    yield CoordSystem(4326)
    yield CoordSystem(ZONE7)
    yield CoordSystem(ZONE7 + " Bounds (7200000, 4500000) (7800000, 7700000)")
    yield CoordSystem("+proj=laea +lat_0=50 +lon_0=20 +ellps=GRS80")
    yield CoordSystem(CoordSystem("EPSG:2154").wkt)
    yield CoordSystem(CoordSystem("EPSG:27700").wkt1)
    yield CoordSystem("ESRI:102100")
    for plain in ("EPSG:32637", ZONE7, "+proj=utm +zone=33 +datum=WGS84"):
        moved = CoordSystem(plain).with_affine((0.5, -0.1, 1000, 0.1, 0.5, -2000))
        yield moved.with_bounds(-10, -20, 30, 40).with_name("Строительная сетка")


class Arrays(unittest.TestCase):
    def setUp(self):
        self.transform = Transform("EPSG:4326", ZONE7)
        self.expected = np.array([self.transform(x, y) for x, y in PLACES.tolist()])

    def test_every_form_of_input_gives_the_scalar_result(self):
        wide = np.zeros((len(PLACES), 5))
        wide[:, 1:3] = PLACES
        turned = np.asfortranarray(PLACES)
        swapped = PLACES.astype(">f8")
        for points in (PLACES, wide[:, 1:3], turned, swapped, PLACES.tolist(), PLACES[::-1][::-1]):
            np.testing.assert_array_equal(self.transform(points), self.expected)
        x, y = self.transform(wide[:, 1], wide[:, 2])
        np.testing.assert_array_equal(np.stack((x, y), -1), self.expected)
        cube = self.transform(PLACES.reshape(50, 100, 2))
        np.testing.assert_array_equal(cube.reshape(-1, 2), self.expected)
        self.assertEqual(self.transform(np.empty((0, 2))).shape, (0, 2))
        self.assertEqual(self.transform(37, 55), self.transform(37.0, 55.0))
        self.assertEqual(self.transform(np.float64(37), 55), self.transform(37.0, 55.0))
        x, y = self.transform(np.array([37.0, 38.0]), 55)
        self.assertEqual((x[0], y[0]), self.transform(37.0, 55.0))
        self.assertEqual(self.transform([]).shape, (0, 2))

    def test_what_is_masked_fails(self):
        points = np.ma.array(PLACES, mask=np.zeros_like(PLACES))
        points[5] = np.ma.masked
        x, y = self.transform(points[:, 0], PLACES[:, 1])
        for result in (self.transform(points), np.stack((x, y), -1)):
            self.assertEqual(np.flatnonzero(np.isnan(result).any(axis=1)).tolist(), [5])
            np.testing.assert_array_equal(result[6:], self.expected[6:])

    def test_back(self):
        np.testing.assert_allclose(self.transform.inverse(self.expected), PLACES, rtol=0, atol=1e-7)

    def test_out_is_written_in_place_and_may_overlap(self):
        points = PLACES.copy()
        self.assertIs(self.transform(points, out=points), points)
        np.testing.assert_array_equal(points, self.expected)
        room = np.empty((len(PLACES) + 1, 2))
        room[:-1] = PLACES
        self.transform(room[:-1], out=room[1:])
        np.testing.assert_array_equal(room[1:], self.expected)

    def test_input_stays_as_it_is(self):
        points = PLACES.copy()
        points.flags.writeable = False
        self.transform(points)
        np.testing.assert_array_equal(points, PLACES)

    def test_what_is_no_list_of_points_is_refused(self):
        frozen = np.empty_like(PLACES)
        frozen.flags.writeable = False
        refused = (
            lambda: self.transform(np.zeros((3, 3))),
            lambda: self.transform(np.zeros(())),
            lambda: self.transform(np.zeros(3), np.zeros(4)),
            lambda: self.transform(PLACES, out=np.empty((2, 2))),
            lambda: self.transform(PLACES, out=np.empty_like(PLACES, dtype="f4")),
            lambda: self.transform(PLACES, out=np.empty((len(PLACES), 4))[:, ::2]),
            lambda: self.transform(PLACES, out=frozen),
            lambda: self.transform(PLACES, errors="ignore"),
            lambda: self.transform("here", "there"),
            lambda: self.transform([["37", "55"]]),
            lambda: self.transform(PLACES + 1j),
            lambda: self.transform(np.zeros((3, 2), dtype="M8[s]")),
            lambda: self.transform(point for point in PLACES),
            lambda: self.transform(None),
        )
        for call in refused:
            with self.assertRaises((ValueError, TypeError)):
                call()

    def test_points_fail_alone(self):
        points = PLACES.copy()
        points[[3, 4000]] = [[37, 95], [math.nan, 55]]
        result = self.transform(points)
        self.assertEqual(np.flatnonzero(np.isnan(result).any(axis=1)).tolist(), [3, 4000])
        good = np.delete(np.arange(len(points)), [3, 4000])
        np.testing.assert_array_equal(result[good], self.expected[good])
        with self.assertRaises(Error) as caught:
            self.transform(points, errors="raise")
        self.assertEqual((caught.exception.code, caught.exception.failed.tolist()), ("point-failed", [3, 4000]))
        self.assertTrue(math.isnan(self.transform(37.0, 95.0)[0]))


class Systems(unittest.TestCase):
    def test_pickles_travel_whole(self):
        here = CoordSystem("EPSG:4326")
        for system in systems():
            with self.subTest(system=repr(system)):
                other = pickle.loads(pickle.dumps(system))
                for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
                    self.assertEqual(pickle.loads(pickle.dumps(system, protocol)), system)
                self.assertEqual(copy.deepcopy(system), system)
                self.assertEqual(hash(other), hash(system))
                self.assertTrue(other.same_as(system))
                for fact in ("name", "code", "unit", "bounds", "affine", "assumptions", "notes", "is_geographic"):
                    self.assertEqual(getattr(other, fact), getattr(system, fact), fact)
                way = Transform(here, system)
                np.testing.assert_array_equal(pickle.loads(pickle.dumps(way))(PLACES), way(PLACES))

    def test_pickled_choice_and_epoch(self):
        way = Transform(4284, 4326, operation="EPSG:1254", epoch=2010.5)
        other = pickle.loads(pickle.dumps(way))
        self.assertEqual((other.epoch, other(37.0, 55.0)), (2010.5, way(37.0, 55.0)))
        self.assertNotEqual(Transform(4284, 4326, operation="EPSG:5044")(37.0, 55.0), way(37.0, 55.0))

    def test_facts(self):
        system = CoordSystem("EPSG:32637")
        self.assertEqual((system.code, system.unit.name, system.unit.metres), (32637, "m", 1.0))
        self.assertEqual(system.area[:4], (36.0, 0.0, 42.0, 84.0))
        self.assertFalse(system.is_geographic)
        self.assertNotEqual(system, CoordSystem("EPSG:32638"))
        for notation in ("wkt", "wkt1", "esri", "projjson", "proj", "coordsys"):
            self.assertTrue(CoordSystem(system.text(notation)).same_as(system), notation)

    def test_what_names_a_system(self):
        class Foreign:
            def to_wkt(self):
                return CoordSystem("EPSG:32637").wkt

        for text in ("EPSG:32637", 32637, np.int32(32637), Foreign(), CoordSystem(32637)):
            self.assertEqual(CoordSystem(text).code, 32637)
        self.assertEqual(Transform(4326, Foreign())(37.0, 55.0), Transform(4326, 32637)(37.0, 55.0))
        self.assertTrue(CoordSystem(32637).to_wkt().startswith("PROJCRS"))
        for nothing in (True, 4326.0, None, b"EPSG:4326", pathlib.Path("a.prj"), [4326]):
            with self.subTest(value=nothing), self.assertRaises(TypeError):
                CoordSystem(nothing)
        with self.assertRaises(UnicodeEncodeError):
            CoordSystem("\ud800")

    def test_refusals_have_codes(self):
        cases = {
            "unknown-code": lambda: CoordSystem("EPSG:99999999"),
            "empty-text": lambda: CoordSystem(""),
            "not-understood": lambda: CoordSystem("qwertyuiop"),
            "no-plane": lambda: CoordSystem("EPSG:4978"),
            "file-failed": lambda: CoordSystem("@/nowhere/a.prj"),
            "unknown-unit": lambda: CoordSystem(4326).with_affine((1, 0, 0, 0, 1, 0), "no unit"),
            "invalid-argument": lambda: CoordSystem(4326).with_affine((1, 1, 0, 1, 1, 0)),
            "missing-grid": lambda: Transform(4277, 4326, operation="EPSG:7709"),
            "no-operation": lambda: Transform(4284, 4326, operation="EPSG:1"),
            "not-writable": lambda: CoordSystem(4326).with_affine((1, 0, 5, 0, 1, 0)).text("esri"),
        }
        for code, call in cases.items():
            with self.subTest(code=code), self.assertRaises(Error) as caught:
                call()
            self.assertEqual(caught.exception.code, code, str(caught.exception))
            self.assertNotRegex(str(caught.exception), "[а-яА-Я]", "English without an application of Qt")

    def test_operations(self):
        way = Transform("EPSG:4284", "EPSG:4326")
        self.assertGreater(len(way.operations), 3)
        self.assertIn(way.operation_at(37.0, 55.0).name, [o.name for o in way.operations])
        self.assertGreater(way.accuracy, 0)
        self.assertEqual(Transform(4326, 4326).accuracy, 0)
        self.assertEqual(Transform(4326, 4326).operations, [])

    def test_found_systems_can_be_made(self):
        for words, code in (("utm 37n", 32637), ("zone 7 gauss-kruger pulkovo 1942", 28407)):
            hits = nivora_cs.find(words, limit=5)
            self.assertIn(code, [hit.code for hit in hits])
            for hit in hits:
                self.assertTrue(CoordSystem(hit.text).name)
        self.assertTrue(nivora_cs.find(at=(2.35, 48.86), limit=3))

    def test_a_guess_names_the_system_of_the_data(self):
        points = Transform("EPSG:4326", "EPSG:32637")([[37.6, 55.7], [38.1, 56.2], [36.9, 55.1]])
        guesses = nivora_cs.guess(points, near=(37.6, 55.7))
        self.assertIn("EPSG:32637", [code for guess in guesses for code in guess.codes])
        self.assertAlmostEqual(guesses[0].centre[0], 37.5, delta=0.5)

    def test_calibration_finds_the_grid_back(self):
        local = np.array([[0, 0], [1000, 0], [0, 1000], [1000, 1000], [500, 200]], dtype=float)
        zone = CoordSystem("EPSG:32637")
        known = local @ [[0.6, 0.8], [-0.8, 0.6]] + [413000, 6179000]
        fit = nivora_cs.calibrate(zone, local, known, names=list("abcde"))
        self.assertEqual((fit.model, fit.refusal), ("similarity", ""))
        self.assertLess(fit.rms_m, 1e-6)
        way = Transform(fit.system("site"), zone)
        np.testing.assert_allclose(way(local), known, rtol=0, atol=1e-4)
        with self.assertRaises(ValueError):
            nivora_cs.calibrate(zone, local, known[:3])


class Files(unittest.TestCase):
    def test_a_mif_gets_the_exact_clause(self):
        system = CoordSystem(ZONE7 + " Bounds (7200000, 4500000) (7800000, 7700000)")
        columns, data = b"Columns 1\r\n  CoordSys Char(9)\r\nData\r\n\r\n", b"Point 7400000 6100000\r\n" * 5000
        clause = b'CoordSys Earth\r\n  Projection 8, 104, "m", 39,\r\n  0, 1, 7500000, 0\r\n'
        for old in (b"", clause):
            with self.subTest(old=old), tempfile.TemporaryDirectory() as folder:
                path = pathlib.Path(folder) / "земли.mif"
                path.write_bytes(b'Version 300\r\nCharset "Neutral"\r\nDelimiter ","\r\n' + old + columns + data)
                path.chmod(0o640)
                nivora_cs.write_mif_system(path, system)
                self.assertEqual(nivora_cs.read_system(path), system)
                written = path.read_bytes()
                self.assertTrue(written.endswith(b"\r\n" + columns + data))
                self.assertEqual(written.count(b"Projection"), 1)
                self.assertEqual([os.listdir(folder), path.stat().st_mode & 0o777], [[path.name], 0o640])

    def test_other_files_stay_as_they_are(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "a.mif"
            path.write_bytes(b"\0\1 nothing of a table")
            for system in (ZONE7, "no system at all"):
                with self.assertRaises((ValueError, Error)):
                    nivora_cs.write_mif_system(path, system)
            self.assertEqual((os.listdir(folder), path.read_bytes()), (["a.mif"], b"\0\1 nothing of a table"))
            with self.assertRaises(Error) as caught:
                nivora_cs.read_system(pathlib.Path(folder) / "none.tab")
            self.assertEqual(caught.exception.code, "file-failed")


def converted(way):
    return way(PLACES)


class Processes(unittest.TestCase):
    def test_threads_share_one(self):
        way = Transform("EPSG:4284", "EPSG:32637")
        expected = way(PLACES)
        results = [None] * 8

        def work(i):
            for _ in range(5):
                results[i] = way(PLACES, threads=1 + i % 3)

        threads = [threading.Thread(target=work, args=(i,)) for i in range(len(results))]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        for result in results:
            np.testing.assert_array_equal(result, expected)

    def test_a_fork_amid_work_goes_on(self):
        way = Transform("EPSG:4284", "EPSG:32637")
        expected = way(PLACES)
        stop = threading.Event()

        def work():
            while not stop.is_set():
                way(PLACES)

        threads = [threading.Thread(target=work) for _ in range(2)]
        for thread in threads:
            thread.start()
        try:
            for _ in range(5):
                child = os.fork()
                if child == 0:
                    same = np.array_equal(way(PLACES), expected)
                    made = CoordSystem("EPSG:32638").code == 32638
                    os._exit(0 if same and made else 1)
                self.assertEqual(os.waitpid(child, 0)[1], 0)
        finally:
            stop.set()
            for thread in threads:
                thread.join()

    def test_pools_of_either_kind(self):
        way = Transform(ZONE7, "EPSG:4326")
        for method in ("fork", "spawn"):
            with multiprocessing.get_context(method).Pool(2) as pool:
                for result in pool.map(converted, [way] * 3):
                    np.testing.assert_array_equal(result, converted(way))

    def test_nothing_is_said_and_nothing_is_left_in_the_environment(self):
        code = (
            "import ctypes, nivora_cs; nivora_cs.Transform(4326, 32637)(37.0, 55.0);"
            "library = ctypes.CDLL(None); library.getenv.restype = ctypes.c_char_p;"
            "assert library.getenv(b'PROJ_LIB') is None"
        )
        clean = {k: v for k, v in os.environ.items() if k not in ("PROJ_LIB", "DISPLAY")}
        done = subprocess.run([sys.executable, "-c", code], env=clean, capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))


    def test_another_interpreter_is_refused(self):
        code = (
            "import _xxsubinterpreters as other\n"
            "made = other.create()\n"
            "other.run_string(made, 'try: import nivora_cs\\nexcept ImportError as e: print(e)')\n"
            "other.destroy(made)\n"
            "import nivora_cs; print(nivora_cs.CoordSystem(4326).code)"
        )
        done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=300)
        self.assertEqual(done.stdout, "nivora_cs works in the main interpreter of a process alone\n4326\n", done.stderr)


class Documentation(unittest.TestCase):
    def test_everything_has_words_and_a_stub(self):
        tree = ast.parse((pathlib.Path(nivora_cs.__file__).parent / "__init__.pyi").read_text())
        stubs = {
            node.name: {item.name for item in getattr(node, "body", []) if isinstance(item, ast.FunctionDef)}
            | {t.id for item in getattr(node, "body", []) if isinstance(item, ast.Assign) for t in item.targets}
            for node in tree.body
            if isinstance(node, (ast.ClassDef, ast.FunctionDef))
        }
        for name in nivora_cs.__all__:
            thing = getattr(nivora_cs, name)
            self.assertTrue(inspect.getdoc(thing), name)
            if not inspect.isclass(thing) or issubclass(thing, (tuple, Exception)):
                continue
            own = {member for member in vars(thing) if not member.startswith("_")}
            self.assertEqual(own - stubs[name], set(), name)
            for member in own:
                self.assertTrue(inspect.getdoc(getattr(thing, member)), f"{name}.{member}")


if __name__ == "__main__":
    unittest.main()
