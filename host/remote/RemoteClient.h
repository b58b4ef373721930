#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "Method.h"
#include "remote/CodecTable.h"
#include "remote/EventStamp.h"
#include "remote/FrameSocket.h"

namespace host {

// A host's answer to a control request.
struct ControlAnswer {
  bool last;         // the reply; false: an item before it
  std::string json;  // as received
};

struct ReceivedEvent {
  Method method;
  std::optional<EventStamp> time;  // of a timed event
};

// The host refused a call or this client, with the reason: no calls are accepted at this socket, or
// too many clients are connected.
struct Refused : Error {
  using Error::Error;
};

// A client of a running host, at its call socket or at its control socket. Owner: its creator.
// Thread: one at a time; waits block it, up to their limit. Failure: NoHost from the constructor
// when nothing listens; HostGone from any operation when the host has disconnected or sent
// something that is not a frame; Refused from any operation; an empty optional when the limit has
// passed.
class RemoteClient {
 public:
  using Limit = std::chrono::milliseconds;

  enum class Events { plain, timed };

  explicit RemoteClient(const std::filesystem::path& socket, Events events = Events::plain);
  RemoteClient(const std::filesystem::path& socket, const std::string& codec,
               Events events = Events::plain);

  // Sends a call and waits for its reply. Keeps the events received meanwhile.
  [[nodiscard]] std::optional<Method> call(Method& method, Limit limit);

  // The id of the frame of the last call or post.
  [[nodiscard]] std::uint32_t lastCall() const { return m_lastCall; }

  // Sends a call that has no reply.
  void post(Method& method);

  // Shuts the sending side down and waits until the host has handled everything. False when the
  // limit has passed. Nothing can be sent afterwards; received frames are kept.
  [[nodiscard]] bool barrier(Limit limit);

  // The next event, in the order of sending.
  [[nodiscard]] std::optional<Method> nextEvent(Limit limit);
  [[nodiscard]] std::optional<ReceivedEvent> nextReceivedEvent(Limit limit);

  // Sends a control request and waits for its reply; drops the items before it.
  [[nodiscard]] std::optional<std::string> control(const std::string& json, Limit limit);

  // Sends a control request whose answer is a stream of items. Returns the id for nextAnswer.
  [[nodiscard]] std::uint32_t startControl(const std::string& json);
  [[nodiscard]] std::optional<ControlAnswer> nextAnswer(std::uint32_t id, Limit limit);

  // For poll. Received frames may be queued already, so call nextAnswer or nextEvent with a limit
  // of 0 first.
  [[nodiscard]] int descriptor() const { return m_socket.descriptor(); }

 private:
  using Deadline = FrameSocket::Deadline;

  std::uint32_t send(FrameKind kind, std::string_view payload);
  void send(const Frame& frame);
  std::uint32_t sendMethod(Method& method);
  [[nodiscard]] bool receive(Deadline deadline);
  void dispatch(const Frame& frame);
  void takeTimedEvent(std::string_view payload);
  [[nodiscard]] Method decode(std::string_view payload);

  CodecTable m_codecs;
  MessageCodec* m_codec;
  FrameSocket m_socket;
  std::uint32_t m_lastId = 0;
  std::uint32_t m_lastCall = 0;
  std::uint32_t m_awaited =
      0;  // the call that waits for its reply; replies to others came too late
  std::optional<Method> m_reply;
  std::deque<ReceivedEvent> m_events;
  std::map<std::uint32_t, std::deque<ControlAnswer>> m_answers;  // by request, until its reply
};

}  // namespace host
