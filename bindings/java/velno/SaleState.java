// SPDX-License-Identifier: Apache-2.0
package velno;

/**
 * How an open sale stands.
 *
 * @param reference  of its receipt, for Register.receiptTotals()
 */
public record SaleState(Totals totals, Reference reference) {
}
