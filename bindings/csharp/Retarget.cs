// SPDX-License-Identifier: Apache-2.0
using System;
using System.Collections.Generic;
using System.Linq;
using Mono.Cecil;

/// <summary>
/// Retarget FROM TO FACADE: an assembly that was compiled for .NET Framework, with .NET Standard 2.0 in place
/// of the assemblies it refers to. Mono has .NET Standard only as a facade, which forwards types: a compiler
/// looks through it and names what lies behind. Ends with 1 when the facade lacks a type that is needed.
/// </summary>
internal static class Retarget
{
    private const uint FixedTime = 0; // the same sources give the same bytes

    public static int Main(string[] arguments)
    {
        AssemblyDefinition standard = AssemblyDefinition.ReadAssembly(arguments[2]);
        ModuleDefinition module = ModuleDefinition.ReadModule(arguments[0]);
        string[] foreign = TypesThatLack(module, standard.MainModule);
        foreach (string name in foreign)
            Console.Error.WriteLine(name + " is not part of .NET Standard 2.0");
        if (foreign.Length > 0)
            return 1;
        ReadTypesInAttributes(module);
        module.Assembly.SecurityDeclarations.Clear(); // permissions, which .NET Standard does not know
        ReferToNothingBut(module, standard.Name);
        module.Write(arguments[1], new WriterParameters { DeterministicMvid = true, Timestamp = FixedTime });
        return 0;
    }

    private static string[] TypesThatLack(ModuleDefinition module, ModuleDefinition standard)
    {
        var held = new HashSet<string>(standard.ExportedTypes.Select(one => one.FullName));
        IEnumerable<string> needed = module.GetTypeReferences().Select(one => one.FullName);
        return needed.Where(one => !held.Contains(one)).ToArray();
    }

    /// <summary>They are texts that name an assembly, and become references when they are read.</summary>
    private static void ReadTypesInAttributes(ModuleDefinition module)
    {
        var types = module.GetTypes().ToArray();
        IEnumerable<ICustomAttributeProvider> members =
            types.SelectMany(one => one.Fields.Cast<ICustomAttributeProvider>().Concat(one.Methods));
        foreach (CustomAttribute attribute in types.Concat(members).SelectMany(one => one.CustomAttributes))
            attribute.ConstructorArguments.ToString();
    }

    private static void ReferToNothingBut(ModuleDefinition module, AssemblyNameDefinition standard)
    {
        AssemblyNameReference only = module.AssemblyReferences[0];
        foreach (TypeReference type in module.GetTypeReferences().Where(one => !one.IsNested))
            type.Scope = only;
        module.AssemblyReferences.Clear();
        module.AssemblyReferences.Add(only);
        only.Name = standard.Name;
        only.Version = standard.Version;
        only.PublicKeyToken = standard.PublicKeyToken;
    }
}
