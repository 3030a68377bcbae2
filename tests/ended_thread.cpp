// SPDX-License-Identifier: Apache-2.0

// A program that loads the libraries on a thread which ends before the program does, as a virtual machine's
// main thread is. Opens and closes a till there. What is deleted meanwhile is kept and looked at last: it has
// changed when somebody used it afterwards.
//
// ended_thread LIBVELNOTILL

#include "till/velnotill.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <new>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

constexpr unsigned char deleted = 0xA5;
constexpr size_t mostKept = 100'000;

struct Block
{
    const unsigned char *bytes;
    size_t size;
};

std::array<Block, mostKept> kept;
std::atomic<size_t> count = 0;
std::atomic<bool> isKeeping = false;

bool keep(void *block, size_t size)
{
    const size_t place = isKeeping && block ? count++ : mostKept;
    if (place >= mostKept)
        return false;
    std::memset(block, deleted, size);
    kept[place] = {static_cast<const unsigned char *>(block), size};
    return true;
}

/** Made before the libraries are loaded, and so destroyed behind all that they have. */
struct LastLook
{
    ~LastLook()
    {
        isKeeping = false;
        const size_t all = std::min<size_t>(count, mostKept);
        const auto isChanged = [](const Block &block) {
            return std::any_of(block.bytes, block.bytes + block.size,
                               [](unsigned char byte) { return byte != deleted; });
        };
        const auto changed = std::count_if(kept.cbegin(), kept.cbegin() + all, isChanged);
        std::printf("%zu blocks deleted, %td used afterwards\n", all, changed);
        std::fflush(stdout);
        if (all == 0 || all == mostKept || changed != 0)
            _exit(1);
    }
};

template <typename Function>
Function *find(void *library, const char *name)
{
    auto *const function = reinterpret_cast<Function *>(dlsym(library, name));
    if (!function) {
        std::fprintf(stderr, "%s\n", dlerror());
        _exit(1);
    }
    return function;
}

void useTill(const char *path, const std::string &ledger)
{
    void *const library = dlopen(path, RTLD_NOW);
    const auto open = find<decltype(velnotill_open)>(library, "velnotill_open");
    const auto close = find<decltype(velnotill_close)>(library, "velnotill_close");
    VelnoTillSettings settings{};
    settings.size = sizeof settings;
    settings.appNo = 5;
    settings.port = 4100;
    settings.serial = "UB1234567890";
    settings.address = "127.0.0.1";
    settings.ledger = ledger.c_str();
    VelnoTill *till = nullptr;
    if (open(&till, &settings) != VelnoTillResult_Done || close(till) != VelnoTillResult_Done) {
        std::fprintf(stderr, "the till cannot be opened and closed\n");
        _exit(1);
    }
}

} // namespace

// The program's functions go before those of its libraries, Qt's too.

void *operator new(size_t size)
{
    if (void *const block = std::malloc(std::max<size_t>(size, 1)))
        return block;
    throw std::bad_alloc();
}

void operator delete(void *block) noexcept
{
    std::free(block);
}

void operator delete(void *block, size_t size) noexcept
{
    if (!keep(block, size))
        std::free(block);
}

int main(int argumentCount, char **arguments)
{
    std::string folder = std::filesystem::temp_directory_path() / "ended_thread-XXXXXX";
    if (argumentCount != 2 || !mkdtemp(folder.data()))
        return 64;
    static const LastLook lastLook;
    isKeeping = true;
    std::thread(useTill, arguments[1], folder + "/ledger").join();
    std::filesystem::remove_all(folder);
}
