// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/velnoext.h"

#include <string_view>

#define VELNO_TEXT(number) #number
#define VELNO_VERSION_TEXT(major, minor, patch) VELNO_TEXT(major) "." VELNO_TEXT(minor) "." VELNO_TEXT(patch)

namespace {

constexpr char libraryVersion[] =
    VELNO_VERSION_TEXT(VELNOEXT_VERSION_MAJOR, VELNOEXT_VERSION_MINOR, VELNOEXT_VERSION_PATCH);
static_assert(std::string_view(libraryVersion) == VELNO_PROJECT_VERSION,
              "VELNOEXT_VERSION_* of velnoext.h and the version of the project in CMakeLists.txt differ");

} // namespace

const char *velnoext_version(void)
{
    return "0";
}

const char *velnoext_library_version(void)
{
    return libraryVersion;
}
