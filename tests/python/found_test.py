"""Where the package finds the schema: beside it, in its sources, in its own prefix and by
pkg-config, in this order.

    found_test.py PACKAGE DESCRIPTOR-SET
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PACKAGE, DESCRIPTOR_SET = map(pathlib.Path, sys.argv[1:3])
BELOW_PREFIX = "share/calibration_protolib/proto/calibration_common/calibration.desc"
PROGRAM = ("import calibration_protolib\nfrom calibration_protolib import descriptor_set\n"
           "print(descriptor_set.find(), calibration_protolib.RobotCalibration().ByteSize())")


class Found(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.environment = {"PATH": os.environ["PATH"], "PKG_CONFIG_LIBDIR": str(self.folder)}

    def package_in(self, *folders):
        parent = self.folder.joinpath(*folders)
        shutil.copytree(PACKAGE, parent / "calibration_protolib",
                        ignore=shutil.ignore_patterns("calibration.desc"))
        return parent

    def put(self, *path):
        path = self.folder.joinpath(*path)
        path.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(DESCRIPTOR_SET, path)
        return path

    def run_in(self, parent):
        return subprocess.run([sys.executable, "-c", PROGRAM], cwd=parent, env=self.environment,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False,
                              universal_newlines=True)

    def expect(self, path, parent):
        done = self.run_in(parent)
        self.assertEqual((done.stdout, done.stderr), (f"{path} 0\n", ""))

    def test_in_its_prefix(self):
        parent = self.package_in("usr/lib/python3/dist-packages")
        self.expect(self.put("usr", BELOW_PREFIX), parent)

    def test_in_its_sources(self):
        parent = self.package_in("source/python")
        self.put("source", BELOW_PREFIX)
        self.expect(self.put("source/calibration_common/calibration.desc"), parent)

    def test_by_pkg_config(self):
        if shutil.which("pkg-config") is None:
            self.fail("pkg-config is not installed: install Debian's package pkgconf")
        parent = self.package_in("anywhere")
        path = self.put("installed", BELOW_PREFIX)
        (self.folder / "calibration_protolib.pc").write_text(
            f"schemadir={path.parents[1]}\nName: n\nDescription: d\nVersion: 1\n")
        self.expect(path, parent)

    def test_beside_it_ahead_of_all_others(self):
        parent = self.package_in("source/python")
        self.put("source/calibration_common/calibration.desc")
        self.put(BELOW_PREFIX)
        self.expect(self.put("source/python/calibration_protolib/calibration.desc"), parent)

    def test_nowhere(self):
        for prefix in ("/usr", "/usr/local", sys.prefix):
            if pathlib.Path(prefix, BELOW_PREFIX).exists():
                self.skipTest(f"the library is installed in {prefix}")
        done = self.run_in(self.package_in("anywhere"))
        self.assertIn("ImportError: found no calibration.desc: expected it beside", done.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
