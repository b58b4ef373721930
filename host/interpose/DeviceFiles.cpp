// The file calls that the device's code opens its files with, for this process and the plug-ins it
// loads: device paths go through reachedPath, all else straight on to the C library. The names with
// "64" are the same calls, for code built with 64-bit file sizes.
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <exception>

#include "interpose/DeviceRoot.h"

// Present when a sanitizer watches the call: it must hear of descriptors that come into being.
extern "C" {
int __interceptor_open(const char*, int, ...) __attribute__((weak));
int __interceptor_open64(const char*, int, ...) __attribute__((weak));
FILE* __interceptor_fopen(const char*, const char*) __attribute__((weak));
FILE* __interceptor_fopen64(const char*, const char*) __attribute__((weak));
int __interceptor_stat(const char*, struct stat*) __attribute__((weak));
int __interceptor_stat64(const char*, struct stat64*) __attribute__((weak));
}

namespace {

// The call that would have been reached without this file.
template <class Call>
Call next(Call watched, const char* name) {
  if (watched != nullptr) return watched;
  void* found = dlsym(RTLD_NEXT, name);
  return reinterpret_cast<Call>(found);
}

// `call` with the path on this machine; `failed` with errno when there is no memory for it.
template <class Call, class Result>
Result onHostPath(const char* path, Result failed, Call call) {
  std::string mapped;
  try {
    if (path != nullptr) mapped = host::reachedPath(path);
  } catch (const std::exception&) {
    errno = ENOMEM;
    return failed;
  }
  return call(path == nullptr ? nullptr : mapped.c_str());
}

// The mode that follows the flags, which is only there when a file may come into being.
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
  return onHostPath(path, -1, [&](const char* mapped) { return real(mapped, flags, mode); });
}

int open64(const char* path, int flags, ...) {
  static const auto real = next(__interceptor_open64, "open64");
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = modeAfter(flags, rest);
  va_end(rest);
  return onHostPath(path, -1, [&](const char* mapped) { return real(mapped, flags, mode); });
}

FILE* fopen(const char* path, const char* mode) {
  static const auto real = next(__interceptor_fopen, "fopen");
  FILE* const none = nullptr;
  return onHostPath(path, none, [&](const char* mapped) { return real(mapped, mode); });
}

FILE* fopen64(const char* path, const char* mode) {
  static const auto real = next(__interceptor_fopen64, "fopen64");
  FILE* const none = nullptr;
  return onHostPath(path, none, [&](const char* mapped) { return real(mapped, mode); });
}

int stat(const char* path, struct stat* result) noexcept {
  static const auto real = next(__interceptor_stat, "stat");
  return onHostPath(path, -1, [&](const char* mapped) { return real(mapped, result); });
}

int stat64(const char* path, struct stat64* result) noexcept {
  static const auto real = next(__interceptor_stat64, "stat64");
  return onHostPath(path, -1, [&](const char* mapped) { return real(mapped, result); });
}

}  // extern "C"
