"""Builds the cvn73100 package with the project's CMake: `pip install .` (add --no-build-isolation to use the
setuptools, wheel and NumPy already installed, offline).

CMake builds only the module's target; its build folder stays under build/ so a second install is quick. With
CVN73100_BUILD_DIR set to a configured build folder, that one is built and used instead.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

SOURCE = pathlib.Path(__file__).resolve().parent
TARGET = "cvn73100_native"


def project_version():
    text = (SOURCE / "CMakeLists.txt").read_text()
    return re.search(r"project\(\s*\w+\s+VERSION\s+([\d.]+)", text).group(1)


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        build = os.environ.get("CVN73100_BUILD_DIR")
        build = pathlib.Path(build) if build else pathlib.Path(self.build_temp).resolve() / "cmake"
        if not (build / "CMakeCache.txt").exists():
            self.configure(build)
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or str(min(os.cpu_count() or 1, 2))
        subprocess.run(["cmake", "--build", str(build), "--target", TARGET, "-j", jobs], check=True)
        built = next((build / "python" / "cvn73100").glob("_native*.so"))
        destination = pathlib.Path(self.get_ext_fullpath(ext.name))
        destination.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(built, destination)

    def configure(self, build):
        command = ["cmake", "-S", str(SOURCE), "-B", str(build), "-DCMAKE_BUILD_TYPE=Release",
                   f"-DPython3_EXECUTABLE={sys.executable}", "-DCVN_BUILD_TESTS=OFF", "-DCVN_BUILD_BENCH=OFF"]
        if shutil.which("ninja"):
            command += ["-G", "Ninja"]
        if shutil.which("ccache"):
            command += ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache", "-DCMAKE_C_COMPILER_LAUNCHER=ccache"]
        subprocess.run(command, check=True)


setup(
    version=project_version(),
    packages=["cvn73100"],
    package_dir={"cvn73100": "python/cvn73100"},
    package_data={"cvn73100": ["*.pyi", "py.typed"]},
    ext_modules=[Extension("cvn73100._native", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
    zip_safe=False,
)
