#include "FolderWatch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace bench {
namespace {

constexpr int kPatience = 10'000;  // ms

}  // namespace

FolderWatch::FolderWatch(const std::filesystem::path& folder)
    : m_descriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
  if (inotify_add_watch(m_descriptor.get(), folder.c_str(), IN_CREATE) < 0) {
    throw std::system_error(errno, std::generic_category(), folder.string());
  }
}

void FolderWatch::wait() const {
  pollfd waited{m_descriptor.get(), POLLIN, 0};
  if (poll(&waited, 1, kPatience) != 1) throw std::runtime_error("nobody came to listen");
  forget();
}

void FolderWatch::forget() const {
  std::array<char, 4096> events;
  while (read(m_descriptor.get(), events.data(), events.size()) > 0) {
  }
}

}  // namespace bench
