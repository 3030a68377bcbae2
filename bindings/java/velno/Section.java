// SPDX-License-Identifier: Apache-2.0
package velno;

/**
 * What a register knows of a section (department).
 *
 * @param number  that the register defines; the simulated one: its tax rate in per cent
 */
public record Section(String name, int number) {
}
