// The C library's calls that open files, redefined for this process and the plug-ins it loads: they
// map device paths to paths on this machine (mappedPath) and pass all else on. The names with "64"
// are the same calls for code built with 64-bit file sizes.
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <exception>

#include "interpose/DeviceRoot.h"

// Present in a sanitizer build: the sanitizer must see each new descriptor.
extern "C" {
int __interceptor_open(const char*, int, ...) __attribute__((weak));
int __interceptor_open64(const char*, int, ...) __attribute__((weak));
FILE* __interceptor_fopen(const char*, const char*) __attribute__((weak));
FILE* __interceptor_fopen64(const char*, const char*) __attribute__((weak));
int __interceptor_stat(const char*, struct stat*) __attribute__((weak));
int __interceptor_stat64(const char*, struct stat64*) __attribute__((weak));
}

namespace {

// The call that this file replaces: the sanitizer's or the C library's.
template <class Call>
Call next(Call sanitizers, const char* name) {
  if (sanitizers != nullptr) return sanitizers;
  void* found = dlsym(RTLD_NEXT, name);
  return reinterpret_cast<Call>(found);
}

// Runs `call` with the path on this machine. Returns `failed`, with errno, when there is no memory
// for the path.
template <class Call, class Result>
Result withMappedPath(const char* path, Result failed, Call call) {
  std::string mapped;
  try {
    if (path != nullptr) mapped = host::mappedPath(path);
  } catch (const std::exception&) {
    errno = ENOMEM;
    return failed;
  }
  return call(path == nullptr ? nullptr : mapped.c_str());
}

// The argument after the flags, which is only there when the call may create a file.
mode_t modeAfter(int flags, va_list rest) {
  const bool given = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
  return given ? va_arg(rest, mode_t) : 0;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  static const auto real = next(__interceptor_open, "open");
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = modeAfter(flags, rest);
  va_end(rest);
  return withMappedPath(path, -1, [&](const char* mapped) { return real(mapped, flags, mode); });
}

int open64(const char* path, int flags, ...) {
  static const auto real = next(__interceptor_open64, "open64");
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = modeAfter(flags, rest);
  va_end(rest);
  return withMappedPath(path, -1, [&](const char* mapped) { return real(mapped, flags, mode); });
}

FILE* fopen(const char* path, const char* mode) {
  static const auto real = next(__interceptor_fopen, "fopen");
  FILE* const none = nullptr;
  return withMappedPath(path, none, [&](const char* mapped) { return real(mapped, mode); });
}

FILE* fopen64(const char* path, const char* mode) {
  static const auto real = next(__interceptor_fopen64, "fopen64");
  FILE* const none = nullptr;
  return withMappedPath(path, none, [&](const char* mapped) { return real(mapped, mode); });
}

int stat(const char* path, struct stat* result) noexcept {
  static const auto real = next(__interceptor_stat, "stat");
  return withMappedPath(path, -1, [&](const char* mapped) { return real(mapped, result); });
}

int stat64(const char* path, struct stat64* result) noexcept {
  static const auto real = next(__interceptor_stat64, "stat64");
  return withMappedPath(path, -1, [&](const char* mapped) { return real(mapped, result); });
}

}  // extern "C"
