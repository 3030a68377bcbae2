#include "ExtDevice/velnoext/library_state.h"

namespace Velno::Ext {

LibraryState &library()
{
    // Never destroyed: at exit the worker thread may still be running on it.
    static LibraryState *const state = new LibraryState;
    return *state;
}

int failed(Result result, int detail)
{
    library().errorDetail = detail;
    return result;
}

Velno::GMP::MatchExt &activeRecord()
{
    return library().pairingRecords[library().activeDevice];
}

bool isSpecialApplication()
{
    return library().appNo == 999999 || library().appNo == 14242;
}

int checkSerialNo(const char *serialNo)
{
    if (!serialNo)
        return failed(NullArgument, 0x300);
    if (qstrnlen(serialNo, serialNoSize + 1) != serialNoSize)
        return failed(BadValue, 0x400);
    return Success;
}

} // namespace Velno::Ext
