// SPDX-License-Identifier: Apache-2.0
package velno;

/** Two numbers by which the register knows a receipt. */
public record Reference(int z, int number) {
}
