// A library that is loaded before all others (LD_PRELOAD) and makes one call of a program fail. The
// environment variable FAULT has the form "call number reason". The call is `read`, `write`, `open`
// or `malloc`, which stands for every allocation. The number selects one of these calls, counted
// from 0 from the beginning of `main`. The reason is a value of `errno`; 0 means that the call
// succeeds but transfers a single byte. With a fourth word, "on", all later such calls fail too.
//
// When a call fails, the library creates the file "fault" in the current directory. It tells a test
// that there was such a call.

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

char failingCall[16];
char goesOn[4];
long untilFailure = -1;
int reason = 0;
bool armed = false;
int (*programMain)(int, char**, char**) = nullptr;

/// Whether this call must fail. If so, sets `errno` to the reason.
bool fails(const char* call) {
    if (!armed || std::strcmp(call, failingCall) != 0 || untilFailure < 0)
        return false;
    if (untilFailure > 0) {
        --untilFailure;
        return false;
    }
    if (*goesOn == '\0')
        untilFailure = -1;
    constexpr mode_t readable = 0600;
    const long mark = syscall(SYS_openat, AT_FDCWD, "fault", O_CREAT | O_WRONLY, readable);
    syscall(SYS_close, mark);
    errno = reason;
    return true;
}

int armedMain(int argc, char** argv, char** environment) {
    if (const char* fault = std::getenv("FAULT"))
        std::sscanf(fault, "%15s %ld %d %3s", failingCall, &untilFailure, &reason, goesOn);
    armed = true;
    return programMain(argc, argv, environment);
}

ssize_t transfer(const char* call, long number, int descriptor, void* buf, std::size_t n) {
    if (fails(call)) {
        if (reason != 0)
            return -1;
        n = n < 1 ? n : 1;
    }
    return syscall(number, descriptor, buf, n);
}

int openFile(const char* path, int flags, mode_t mode) {
    return fails("open") ? -1 : static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* ptr, std::size_t size);

int __libc_start_main(int (*main)(int, char**, char**), int argc, char** argv, void (*init)(),
                      void (*fini)(), void (*loaderFini)(), void* stackEnd) {
    programMain = main;
    using Start = decltype(&__libc_start_main);
    const auto start = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(armedMain, argc, argv, init, fini, loaderFini, stackEnd);
}

void* malloc(std::size_t size) {
    return fails("malloc") ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    return fails("malloc") ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* ptr, std::size_t size) {
    return fails("malloc") ? nullptr : __libc_realloc(ptr, size);
}

ssize_t read(int descriptor, void* buf, std::size_t n) {
    return transfer("read", SYS_read, descriptor, buf, n);
}

ssize_t write(int descriptor, const void* buf, std::size_t n) {
    return transfer("write", SYS_write, descriptor, const_cast<void*>(buf), n);
}

int open(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return openFile(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    std::va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return openFile(path, flags, mode);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
