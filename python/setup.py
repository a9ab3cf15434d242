"""Installs the package calibration_protolib, with the schema's descriptor set in it.

    pip install ./python

The descriptor set is the one of these sources or of an installed library
(calibration_protolib/descriptor_set.py tells where it is looked for). There is no pyproject.toml:
with one, pip would need the network to build what takes setuptools alone.
"""

import atexit
import importlib.util
import pathlib
import shutil
import sys
import tempfile

from setuptools import setup
from setuptools.command.build_py import build_py

FOLDER = pathlib.Path(__file__).resolve().parent
PACKAGE = "calibration_protolib"


def find_descriptor_set():
    # Not by importing the package, which needs what is looked for here.
    spec = importlib.util.spec_from_file_location(
        "descriptor_set", FOLDER / PACKAGE / "descriptor_set.py")
    module = importlib.util.module_from_spec(spec)
    sys.dont_write_bytecode = True
    spec.loader.exec_module(module)
    path = module.find()
    if path is None:
        sys.exit(module.NOT_FOUND)
    return path


class BuildWithDescriptorSet(build_py):
    def run(self):
        super().run()
        path = find_descriptor_set()
        print(f"taking the schema from {path}")
        shutil.copyfile(path, pathlib.Path(self.build_lib, PACKAGE, path.name))


# The sources stay as they are: what is made on the way is made elsewhere.
scratch = tempfile.mkdtemp()
atexit.register(shutil.rmtree, scratch, ignore_errors=True)

setup(
    name="calibration-protolib",
    version="1.0.0",
    description="Typed records of a robot's calibration",
    license="MIT",
    packages=[PACKAGE],
    package_data={PACKAGE: ["py.typed", "*.pyi"]},
    python_requires=">=3.8",
    install_requires=["protobuf>=3.12"],
    extras_require={"numpy": ["numpy"]},
    cmdclass={"build_py": BuildWithDescriptorSet},
    options={"build": {"build_base": scratch}, "egg_info": {"egg_base": scratch}},
)
