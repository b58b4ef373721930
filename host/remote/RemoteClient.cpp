#include "remote/RemoteClient.h"

#include <nlohmann/json.hpp>
#include <sstream>

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

// The id of the refusal that a host sends to a client before any request.
constexpr std::uint32_t kNoRequest = 0;

MessageCodec& knownCodec(CodecTable& table, const std::string& name) {
  if (MessageCodec* const codec = table.find(name)) return *codec;
  throw Error("unknown codec " + name);
}

std::string errorOf(std::string_view refusal) {
  const auto json = nlohmann::json::parse(refusal, nullptr, false);
  const auto error = json.is_object() ? json.find("error") : json.end();
  return error != json.end() && error->is_string() ? error->get<std::string>() : "refused";
}

}  // namespace

RemoteClient::RemoteClient(const std::filesystem::path& socket, Events events)
    : RemoteClient(socket, std::string(kDefaultCodec), events) {}

RemoteClient::RemoteClient(const std::filesystem::path& socket, const std::string& codec,
                           Events events)
    : m_codec(&knownCodec(m_codecs, codec)), m_socket(socket) {
  const bool timed = events == Events::timed;
  if (!timed && codec == kDefaultCodec) return;
  send({FrameKind::hello, 0, timed ? codec + std::string(kTimedEvents) : codec});
}

std::optional<Method> RemoteClient::call(Method& method, Limit limit) {
  const Deadline deadline = Clock::now() + limit;
  m_reply.reset();
  m_awaited = sendMethod(method);
  while (!m_reply) {
    if (!receive(deadline)) break;
  }
  m_awaited = 0;
  return std::exchange(m_reply, std::nullopt);
}

void RemoteClient::post(Method& method) {
  sendMethod(method);
}

bool RemoteClient::barrier(Limit limit) {
  const Deadline deadline = Clock::now() + limit;
  m_socket.finishSending();
  try {
    while (receive(deadline)) continue;
  } catch (const HostGone&) {
    return true;  // the host has handled everything and disconnected
  }
  return false;
}

std::optional<Method> RemoteClient::nextEvent(Limit limit) {
  auto event = nextReceivedEvent(limit);
  return event ? std::optional(std::move(event->method)) : std::nullopt;
}

std::optional<ReceivedEvent> RemoteClient::nextReceivedEvent(Limit limit) {
  const Deadline deadline = Clock::now() + limit;
  while (m_events.empty()) {
    if (!receive(deadline)) return std::nullopt;
  }
  ReceivedEvent event = std::move(m_events.front());
  m_events.pop_front();
  return event;
}

std::optional<std::string> RemoteClient::control(const std::string& json, Limit limit) {
  const Deadline deadline = Clock::now() + limit;
  const std::uint32_t id = startControl(json);
  for (;;) {
    const auto left = std::chrono::ceil<Limit>(deadline - Clock::now());
    const auto answer = nextAnswer(id, std::max(left, Limit::zero()));
    if (!answer) break;
    if (answer->last) return answer->json;
  }
  m_answers.erase(id);  // later answers are dropped
  return std::nullopt;
}

std::uint32_t RemoteClient::startControl(const std::string& json) {
  const std::uint32_t id = send(FrameKind::controlRequest, json);
  m_answers[id];
  return id;
}

std::optional<ControlAnswer> RemoteClient::nextAnswer(std::uint32_t id, Limit limit) {
  const Deadline deadline = Clock::now() + limit;
  const auto found = m_answers.find(id);
  if (found == m_answers.end()) return std::nullopt;
  while (found->second.empty()) {
    if (!receive(deadline)) return std::nullopt;
  }
  ControlAnswer answer = std::move(found->second.front());
  found->second.pop_front();
  if (answer.last) m_answers.erase(found);
  return answer;
}

std::uint32_t RemoteClient::send(FrameKind kind, std::string_view payload) {
  if (payload.size() > kMaxPayload) throw Error("the request is too long: at most 1 MiB");
  send({kind, ++m_lastId, payload});
  return m_lastId;
}

// A host may send a reason before it disconnects.
void RemoteClient::send(const Frame& frame) try { m_socket.send(frame); } catch (const HostGone&) {
  try {
    while (receive(Clock::now())) continue;
  } catch (const HostGone&) {
  }
  throw;
}

std::uint32_t RemoteClient::sendMethod(Method& method) {
  std::stringstream stream;
  m_codec->encode(method, stream);
  return m_lastCall = send(FrameKind::call, stream.view());
}

bool RemoteClient::receive(Deadline deadline) {
  Frame frame;
  if (!m_socket.receive(frame, deadline)) return false;
  dispatch(frame);
  return true;
}

void RemoteClient::dispatch(const Frame& frame) {
  switch (frame.kind) {
    case FrameKind::reply:
      if (frame.id == m_awaited) m_reply = decode(frame.payload);
      return;
    case FrameKind::event:
      m_events.push_back({decode(frame.payload), std::nullopt});
      return;
    case FrameKind::timedEvent:
      return takeTimedEvent(frame.payload);
    case FrameKind::controlReply:
    case FrameKind::controlItem:
      if (frame.id == kNoRequest || frame.id == m_lastCall) {
        throw Refused(errorOf(frame.payload));
      }
      if (const auto found = m_answers.find(frame.id); found != m_answers.end()) {
        const bool last = frame.kind == FrameKind::controlReply;
        found->second.push_back({last, std::string(frame.payload)});
      }
      return;
    default:
      throw HostGone("not a clock host: it sent a frame that only clients send");
  }
}

void RemoteClient::takeTimedEvent(std::string_view payload) {
  const auto time = decodeEventStamp(payload);
  if (!time) throw HostGone("not a clock host: it sent an event without its time");
  m_events.push_back({decode(payload.substr(kEventStampSize)), time});
}

Method RemoteClient::decode(std::string_view payload) {
  std::stringstream stream{std::string(payload)};
  Method method;
  if (!m_codec->decode(stream, method))
    throw HostGone("not a clock host: it sent bytes that are not a method");
  return method;
}

}  // namespace host
