# SPDX-License-Identifier: Apache-2.0
"""The C# binding, out of its package, with programs that Mono compiles and runs: VELNO_MCS and VELNO_MONO."""

from __future__ import annotations

import os
import re
import sys
import unittest
import zipfile
from pathlib import Path
from xml.etree import ElementTree

BINDING = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(BINDING), str(BINDING.parent / "tests")]

import compiled_binding
import pack
import test_layout
import velno

MANIFEST = "{http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd}"
CONTENT_TYPES = "{http://schemas.openxmlformats.org/package/2006/content-types}"
RELATIONSHIPS = "{http://schemas.openxmlformats.org/package/2006/relationships}"


class CSharp(compiled_binding.CompiledBindingTest):
    language = "csharp"
    connecting, card_payment = "Connecting", "CardPayment"
    statuses_after_ctrl_c = (1,)
    package: zipfile.ZipFile

    @classmethod
    def compile_all(cls) -> None:
        cls.package = zipfile.ZipFile(pack.pack(cls.built))
        cls.addClassCleanup(cls.package.close)
        (cls.built / "Velno.dll").write_bytes(cls.package.read("lib/netstandard2.0/Velno.dll"))
        for program in BINDING / "tests" / "Checks.cs", BINDING / "examples" / "Market.cs":
            cls.compile_program(program)

    @classmethod
    def compile(cls, *arguments: str) -> None:
        options = ["-langversion:7.2", "-unsafe", "-warnaserror"]
        compiled_binding.run_or_fail(os.environ["VELNO_MCS"], *options, *arguments)

    @classmethod
    def compile_program(cls, source: Path) -> None:
        references = [f"-r:{cls.built}/Velno.dll", "-r:Facades/netstandard.dll"]
        cls.compile(*references, f"-out:{cls.built}/{source.stem}.exe", str(source))

    def compile_readme(self, text: str) -> str:
        source = self.built / "Readme.cs"
        source.write_text(text, encoding="utf-8")
        self.compile_program(source)
        return source.stem

    def command_of(self, program: str) -> list[str]:
        return [os.environ["VELNO_MONO"], str(self.built / f"{program}.exe")]

    def test_layouts_and_values_are_a_compilers(self) -> None:
        told = dict(line.split("=") for line in self.check("layout").splitlines())
        self.assertIn("offsetof(VelnoSaleItemList, items9)", told)
        self.assertIn("VelnoCause_WrongKey", told)
        ours = {re.sub(r"items(\d)\)", r"items[\1])", name): int(value) for name, value in told.items()}
        self.assertEqual(ours, test_layout.told_by_compiler(list(ours)))
        for module in test_layout.HEADERS:
            text = test_layout.header_text(module)
            declared = re.findall(r"typedef struct (\w+)\n\{", text)
            self.assertLessEqual({f"sizeof({name})" for name in declared}, set(ours))
            values = re.findall(r"^    (Velno\w+_\w+)(?: =|,)", text, re.MULTILINE)
            self.assertLessEqual(set(values), set(ours))

    def xml(self, name: str) -> ElementTree.Element:
        return ElementTree.fromstring(self.package.read(name))

    def test_the_package_holds_what_it_should(self) -> None:
        names = self.package.namelist()
        [properties] = [one for one in names if one.endswith(".psmdcp")]
        library = {"lib/netstandard2.0/Velno.dll", "lib/netstandard2.0/Velno.xml"}
        texts = {"LICENSE", "README.md", "Velno.nuspec", "[Content_Types].xml", "_rels/.rels"}
        self.assertEqual(set(names), library | texts | {properties})
        self.assertEqual(len(names), len(set(names)))
        self.assertEqual(self.package.read("README.md"), (BINDING / "README.md").read_bytes())
        self.assertIn(f"Velno.{velno.__version__}.nupkg", (BINDING / "README.md").read_text(encoding="utf-8"))
        self.assertIn(b"Apache License", self.package.read("LICENSE"))
        targets = {one.get("Target") for one in self.xml("_rels/.rels").iter(f"{RELATIONSHIPS}Relationship")}
        self.assertEqual(targets, {"/Velno.nuspec", f"/{properties}"})

    def test_every_part_has_a_type(self) -> None:
        types = self.xml("[Content_Types].xml")
        extensions = {one.get("Extension") for one in types.iter(f"{CONTENT_TYPES}Default")}
        single = {one.get("PartName") for one in types.iter(f"{CONTENT_TYPES}Override")}
        for name in set(self.package.namelist()) - {"[Content_Types].xml"}:
            self.assertTrue(f"/{name}" in single or name.rpartition(".")[2] in extensions, name)

    def test_the_manifest_tells_what_the_package_is(self) -> None:
        manifest = self.xml("Velno.nuspec").find(f"{MANIFEST}metadata")
        assert manifest is not None
        told = {one.tag.removeprefix(MANIFEST): one.text for one in manifest}
        self.assertEqual((told["id"], told["version"]), ("Velno", velno.library_version()))
        self.assertEqual((told["license"], told["readme"]), ("Apache-2.0", "README.md"))
        self.assertEqual([one.get("type") for one in manifest.iter(f"{MANIFEST}license")], ["expression"])
        [group] = manifest.iter(f"{MANIFEST}group")
        self.assertEqual((group.get("targetFramework"), len(group)), (".NETStandard2.0", 0))

    def test_the_assembly_is_for_net_standard_alone(self) -> None:
        told = self.check("assembly").splitlines()
        self.assertEqual(
            told,
            [
                f"Velno, Version={velno.library_version()}.0, Culture=neutral, PublicKeyToken=null",
                "netstandard, Version=2.0.0.0, Culture=neutral, PublicKeyToken=cc7b13ffcd2ddd51",
                ".NETStandard,Version=v2.0",
            ],
        )
        assembly = self.package.read("lib/netstandard2.0/Velno.dll")
        for text in "mscorlib", str(BINDING):
            self.assertNotIn(text.encode(), assembly)
            self.assertNotIn(text.encode("utf-16-le"), assembly)

    def test_what_net_standard_lacks_is_refused(self) -> None:
        source = self.folder / "Foreign.cs"
        source.write_text("public class Foreign { public System.Security.Principal.WindowsIdentity held; }")
        foreign, retargeted = self.folder / "Foreign.dll", self.folder / "Retargeted.dll"
        self.compile("-target:library", f"-out:{foreign}", str(source))
        program = pack.compile_retargeting(self.folder)
        command = [os.environ["VELNO_MONO"], *map(str, (program, foreign, retargeted, pack.STANDARD))]
        with self.assertRaisesRegex(RuntimeError, "WindowsIdentity is not part of .NET Standard 2.0"):
            compiled_binding.run_or_fail(*command)
        self.assertFalse(retargeted.exists())

    def test_the_same_sources_give_the_same_package(self) -> None:
        again = pack.pack(self.folder)
        assert self.package.filename
        self.assertEqual(again.read_bytes(), Path(self.package.filename).read_bytes())


if __name__ == "__main__":
    unittest.main()
