// SPDX-License-Identifier: Apache-2.0
package velno.low;

import com.sun.jna.Native;
import com.sun.jna.Pointer;
import java.io.File;

/** The shared libraries: from the folder that VELNO_LIBRARY names, and else from where the loader looks. */
public final class Loading {
    /** The functions of velnoext.h. */
    public static final Velnoext.Functions EXT =
        load("libvelnoext.so.0", Velnoext.Functions.class); // first: the other needs it

    /** The functions of velnotill.h. */
    public static final Velnotill.Functions TILL = load("libvelnotill.so.0", Velnotill.Functions.class);

    private Loading() {
    }

    private static <T extends com.sun.jna.Library> T load(String name, Class<T> functions) {
        String folder = System.getenv("VELNO_LIBRARY");
        String path = folder == null || folder.isEmpty() ? name : new File(folder, name).getAbsolutePath();
        try {
            return Native.load(path, functions);
        } catch (UnsatisfiedLinkError problem) {
            throw new UnsatisfiedLinkError(
                path + " cannot be loaded: " + problem.getMessage()
                + ". Install the package libvelnoext0, or set VELNO_LIBRARY to the folder that holds"
                + " libvelnoext.so.0"
                + " and libvelnotill.so.0.");
        }
    }

    /** A text that belongs to a library. */
    public static String text(Pointer text) {
        return text == null ? "" : text.getString(0, "UTF-8");
    }
}
