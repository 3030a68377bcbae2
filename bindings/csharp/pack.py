#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the NuGet package of the C# binding, without a network: pack.py FOLDER

Needs Mono from Debian (mono-devel), whose compiler builds the assembly for .NET Standard 2.0. The same sources
give the same bytes. Prints the path of the package.
"""

from __future__ import annotations

import runpy
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path

BINDING = Path(__file__).resolve().parent
VERSION: str = runpy.run_path(str(BINDING.parent / "python" / "velno" / "_version.py"))["VERSION"]

MONO = Path("/usr/lib/mono")
STANDARD = MONO / "4.8-api" / "Facades" / "netstandard.dll"
# The .NET Framework that first had all of .NET Standard 2.0: what it lacks is not used by accident.
FRAMEWORK = "-sdk:4.6.1-api"
# Not every parameter and field needs words.
COMPILER = ["mcs", "-codepage:utf8", "-langversion:7.2", "-unsafe", "-warnaserror", "-nowarn:1573,1591"]
FIXED_TIME = (1980, 1, 1, 0, 0, 0)  # the first that an archive can hold
PROPERTIES = "package/services/metadata/core-properties/velno.psmdcp"

ASSEMBLY = f"""
using System.Reflection;
using System.Runtime.Versioning;
[assembly: AssemblyVersion("{VERSION}.0")]
[assembly: AssemblyInformationalVersion("{VERSION}")]
[assembly: TargetFramework(".NETStandard,Version=v2.0", FrameworkDisplayName = "")]
"""

CONTENT_TYPES = """<?xml version="1.0" encoding="utf-8"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
  <Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml" />
  <Default Extension="psmdcp" ContentType="application/vnd.openxmlformats-package.core-properties+xml" />
  <Default Extension="dll" ContentType="application/octet" />
  <Default Extension="md" ContentType="application/octet" />
  <Default Extension="nuspec" ContentType="application/octet" />
  <Default Extension="xml" ContentType="application/octet" />
  <Override PartName="/LICENSE" ContentType="application/octet" />
</Types>
"""

RELATIONSHIPS = f"""<?xml version="1.0" encoding="utf-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
  <Relationship Id="manifest" Target="/Velno.nuspec"
    Type="http://schemas.microsoft.com/packaging/2010/07/manifest" />
  <Relationship Id="properties" Target="/{PROPERTIES}"
    Type="http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties" />
</Relationships>
"""

CORE_PROPERTIES = f"""<?xml version="1.0" encoding="utf-8"?>
<coreProperties xmlns="http://schemas.openxmlformats.org/package/2006/metadata/core-properties"
    xmlns:dc="http://purl.org/dc/elements/1.1/">
  <dc:creator>Velno</dc:creator>
  <dc:identifier>Velno</dc:identifier>
  <version>{VERSION}</version>
</coreProperties>
"""


def run(*command: str | Path) -> None:
    """Ends the program with what the command said when it fails."""
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"pack.py: {command[0]} has failed:\n{done.stdout}{done.stderr}")


def compile_retargeting(folder: Path) -> Path:
    """The program that Retarget.cs is. It finds Cecil, which reads and writes assemblies, by itself."""
    found = sorted((MONO / "gac" / "Mono.Cecil").glob("0.11.*/Mono.Cecil.dll"))
    if not found:
        sys.exit("pack.py: Mono.Cecil 0.11 is not installed; Debian's package mono-devel brings it")
    program = folder / "Retarget.exe"
    run(*COMPILER, f"-r:{found[-1]}", f"-out:{program}", BINDING / "Retarget.cs")
    return program


def build_assembly(folder: Path) -> None:
    """Writes Velno.dll and Velno.xml, which has the words of its documentation."""
    own = folder / "framework"
    own.mkdir()
    (own / "Assembly.cs").write_text(ASSEMBLY, encoding="utf-8")
    sources = [*sorted((BINDING / "Velno").glob("*.cs")), own / "Assembly.cs"]
    written = [f"-doc:{folder}/Velno.xml", f"-out:{own}/Velno.dll"]
    run(*COMPILER, FRAMEWORK, "-target:library", *written, *sources)
    run("mono", compile_retargeting(own), own / "Velno.dll", folder / "Velno.dll", STANDARD)


def parts(built: Path) -> dict[str, bytes]:
    """What the package holds, by name."""
    manifest = (BINDING / "Velno.nuspec").read_text(encoding="utf-8").replace("$version$", VERSION)
    return {
        "[Content_Types].xml": CONTENT_TYPES.encode(),
        "_rels/.rels": RELATIONSHIPS.encode(),
        "Velno.nuspec": manifest.encode(),
        "LICENSE": (BINDING.parents[1] / "LICENSE").read_bytes(),
        "README.md": (BINDING / "README.md").read_bytes(),
        "lib/netstandard2.0/Velno.dll": (built / "Velno.dll").read_bytes(),
        "lib/netstandard2.0/Velno.xml": (built / "Velno.xml").read_bytes(),
        PROPERTIES: CORE_PROPERTIES.encode(),
    }


def pack(folder: Path) -> Path:
    """Writes the package into the folder, and returns its path."""
    package = folder / f"Velno.{VERSION}.nupkg"
    with tempfile.TemporaryDirectory() as built:
        build_assembly(Path(built))
        with zipfile.ZipFile(package, "w") as archive:
            for name, content in parts(Path(built)).items():
                part = zipfile.ZipInfo(name, FIXED_TIME)
                part.external_attr = 0o644 << 16
                archive.writestr(part, content, zipfile.ZIP_DEFLATED)
    return package


if __name__ == "__main__":
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        print(__doc__, file=sys.stdout if sys.argv[1:] == ["--help"] else sys.stderr)
        sys.exit(0 if sys.argv[1:] == ["--help"] else 64)
    if not Path(sys.argv[1]).is_dir():
        sys.exit(f"pack.py: there is no folder {sys.argv[1]}")
    print(pack(Path(sys.argv[1])))
