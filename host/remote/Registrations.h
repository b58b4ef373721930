#pragma once

#include <string_view>

namespace host {

class Peer;

// While it lives, this thread is in the client's call: the service asks for its proxy meanwhile.
class CallUnderWay {
 public:
  explicit CallUnderWay(std::string_view call);  // encoded by the client's codec
  ~CallUnderWay();
  CallUnderWay(const CallUnderWay&) = delete;
  CallUnderWay& operator=(const CallUnderWay&) = delete;
};

// Whether the call that this thread is in may have the client's proxy: an "observeTimeEvents"
// beyond kMostRegistrations may not. Counts the registrations of the client.
[[nodiscard]] bool mayRegister(Peer& peer);

}  // namespace host
