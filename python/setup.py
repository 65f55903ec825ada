# Plain setuptools with no pyproject.toml: pip then builds in the running environment, so
# `pip install ./python` needs no network to fetch build tools. Building the package builds
# its native library from the repository around this folder with CMake and puts it, with the
# shipped data file, inside the package.
import os
import shutil
import subprocess

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE_DIR = os.environ.get("LINGOMAT_SOURCE_DIR", os.path.dirname(HERE))
NATIVE_NAME = "_lingomat_native.so"


class BuildWithNative(build_py):
    """Also builds the native library and copies it and the data file into the package."""

    def run(self):
        super().run()
        if not os.path.isfile(os.path.join(SOURCE_DIR, "plugin", "lingomat.h")):
            raise SystemExit(f"lingomat: the library's sources are not at {SOURCE_DIR}; build "
                             "from a checkout (pip install ./python), or set "
                             "LINGOMAT_SOURCE_DIR")
        build_dir = os.path.join(os.path.abspath(self.get_finalized_command("build").build_temp),
                                 "lingomat-native")
        subprocess.run(["cmake", "-S", SOURCE_DIR, "-B", build_dir, "-DCMAKE_BUILD_TYPE=Release",
                        "-DLINGOMAT_BUILD_TESTS=OFF", "-DLINGOMAT_INSTALL=OFF",
                        "-DLINGOMAT_BUILD_PYTHON=ON"], check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["cmake", "--build", build_dir, "--target", "lingomat_python", "-j",
                        str(os.cpu_count() or 1)], check=True)
        package_dir = os.path.join(self.build_lib, "lingomat")
        shutil.copy2(os.path.join(build_dir, "python", "native", NATIVE_NAME), package_dir)
        os.makedirs(os.path.join(package_dir, "data"), exist_ok=True)
        shutil.copy2(os.path.join(SOURCE_DIR, "data", "lingomat.json"),
                     os.path.join(package_dir, "data", "lingomat.json"))


class NativeDistribution(Distribution):
    # A wheel with a native library is tied to its platform, not "py3-none-any".
    def has_ext_modules(self):
        return True


setup(cmdclass={"build_py": BuildWithNative}, distclass=NativeDistribution)
