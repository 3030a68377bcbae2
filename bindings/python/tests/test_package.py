# SPDX-License-Identifier: Apache-2.0
"""A wheel can be built without a network, holds what it should, and works from where it is unpacked."""

from __future__ import annotations

import shutil
import tempfile
import unittest
import zipfile
from pathlib import Path

import support
import velno

BUILD = "import setuptools.build_meta, sys; print(setuptools.build_meta.build_wheel(sys.argv[1]))"


class Wheel(unittest.TestCase):
    folder: Path
    wheel: zipfile.ZipFile

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        source = cls.folder / "source"
        shutil.copytree(support.BINDING, source, ignore=shutil.ignore_patterns("__pycache__"))
        done = support.run_python("-c", BUILD, str(cls.folder), cwd=source)
        if done.returncode != 0:
            raise RuntimeError(done.stderr)
        cls.wheel = zipfile.ZipFile(cls.folder / done.stdout.splitlines()[-1])
        cls.addClassCleanup(cls.wheel.close)

    def test_it_holds_the_package_and_its_licence(self) -> None:
        held = set(self.wheel.namelist())
        package = {f"velno/{path.name}" for path in (support.BINDING / "velno").iterdir() if path.is_file()}
        self.assertLessEqual({"velno/py.typed", "velno/_velnoext.py"}, package)
        information = f"velno-{velno.__version__}.dist-info"
        self.assertLessEqual(package | {f"{information}/LICENSE"}, held)
        self.assertEqual({name for name in held if not name.startswith(information)}, package)
        self.assertIn("Apache License", self.wheel.read(f"{information}/LICENSE").decode())
        metadata = self.wheel.read(f"{information}/METADATA").decode()
        self.assertIn(f"\nVersion: {velno.library_version()}\n", metadata)

    def test_it_works_from_where_it_is_unpacked(self) -> None:
        place = self.folder / "site"
        self.wheel.extractall(place)
        code = "import velno; print(velno.__file__, velno.library_version())"
        done = support.run_python("-c", code, cwd=self.folder, PYTHONPATH=str(place))
        self.assertEqual(done.stdout, f"{place}/velno/__init__.py {velno.__version__}\n", done.stderr)


if __name__ == "__main__":
    unittest.main()
