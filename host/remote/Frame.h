#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The messages between the host and its clients on a stream socket. On the wire, numbers
// big-endian:
//   u32 length of what follows | u8 kind | u32 id | payload
enum class FrameKind : std::uint8_t {
  hello = 0,           // from a client, only as its first frame; payload: the codec's name
  call = 1,            // from a client; payload: an encoded Method
  reply = 2,           // to a client; the id of its call
  event = 3,           // to a client; id 0
  controlRequest = 4,  // from a client; payload: JSON text
  controlReply = 5,    // to a client; the id of its request; JSON text
  controlItem = 6,     // to a client; one of many under the id of its request; JSON text
  timedEvent = 7       // to a client that asked for them; id 0; an EventStamp and an event
};

// After the codec's name in a hello: the client gets timed events in place of events.
inline constexpr std::string_view kTimedEvents = "+time";

inline constexpr std::size_t kFrameHeaderSize = 9;               // bytes before the payload
inline constexpr std::size_t kMaxFrameLength = 1024 * 1024;      // of what follows the length
inline constexpr std::size_t kMaxPayload = kMaxFrameLength - 5;  // less kind and id

struct Frame {
  FrameKind kind = FrameKind::hello;
  std::uint32_t id = 0;
  std::string_view payload;
};

// The header of a payload of `payload` bytes. REQUIRES: payload <= kMaxPayload.
[[nodiscard]] std::array<char, kFrameHeaderSize> frameHeader(FrameKind kind, std::uint32_t id,
                                                             std::size_t payload);

// A whole frame. REQUIRES: frame.payload.size() <= kMaxPayload.
[[nodiscard]] std::string encodeFrame(const Frame& frame);

// Cuts a stream of bytes into frames. Memory grows with the received bytes, never with an announced
// length. Owner: one end of a connection. Thread: one at a time.
// Failure: after a protocol error the stream stays broken; fault() describes it.
class FrameReader {
 public:
  enum class Outcome { frame, needMore, broken };

  FrameReader();

  // Space for the next bytes: at least one. Invalidates earlier payloads.
  [[nodiscard]] std::span<char> space();

  // `bytes` bytes of space() have been filled.
  void commit(std::size_t bytes);

  // Removes the next complete frame. The payload is valid until the next space().
  [[nodiscard]] Outcome next(Frame& frame);

  // True when there are bytes that next() has not removed.
  [[nodiscard]] bool midFrame() const { return m_begin != m_end; }

  // One line, such as "frame of 4 bytes"; empty until a protocol error.
  [[nodiscard]] const std::string& fault() const { return m_fault; }

 private:
  Outcome refuse(std::string fault);
  void makeRoom();

  std::vector<char> m_buffer;
  std::size_t m_begin = 0;  // of the bytes not yet removed
  std::size_t m_end = 0;
  std::string m_fault;
};

}  // namespace host
