#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "FolderWatch.h"
#include "remote/Descriptor.h"
#include "remote/Frame.h"

namespace bench {

// A client's connection to a Unix stream socket, with as little in the way as can be: it blocks.
// Owner: a measurement. Failure: std::system_error; std::runtime_error when the other side ends or
// says nothing for ten seconds.
class Line {
 public:
  // Connects to who listens there, waiting for it to begin to: up to ten seconds.
  explicit Line(const std::filesystem::path& socket);

  // The same, for who measures that waiting. watch: on the socket's folder, and older than the
  // socket.
  Line(const std::filesystem::path& socket, const FolderWatch& watch);

  void send(std::string_view bytes) const;

  // Takes exactly that many bytes, and gives them away.
  void take(std::size_t bytes) const;

  // Takes one frame.
  struct Taken {
    host::FrameKind kind{};
    std::string bytes;  // the whole frame

    [[nodiscard]] std::string payload() const { return bytes.substr(host::kFrameHeaderSize); }
  };
  [[nodiscard]] Taken takeFrame() const;

 private:
  void connect(const std::filesystem::path& socket, const FolderWatch& watch) const;
  void takeInto(char* to, std::size_t bytes) const;

  host::Descriptor m_descriptor;
};

// The bytes of a call without parameters, and of a control request.
[[nodiscard]] std::string callOf(const char* method);
[[nodiscard]] std::string controlOf(std::string_view json);

}  // namespace bench
