// SPDX-License-Identifier: Apache-2.0
package velno;

/** Whatever the libraries refuse or fail at. */
public abstract class VelnoException extends RuntimeException {
    private static final long serialVersionUID = 1;

    VelnoException(String message) {
        super(message);
    }
}
