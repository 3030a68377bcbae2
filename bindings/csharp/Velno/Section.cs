// SPDX-License-Identifier: Apache-2.0
namespace Velno
{
    /// <summary>What a register knows of a section (department).</summary>
    public struct Section
    {
        internal Section(string name, int number)
        {
            Name = name;
            Number = number;
        }

        public string Name { get; }

        /// <summary>That the register defines; the simulated one: its tax rate in per cent.</summary>
        public int Number { get; }
    }
}
