// A connection's stream in pieces of any size: it yields the frames of the whole stream, the buffer
// grows only with the bytes received, and calls use the agreed codec.

#include <algorithm>
#include <optional>
#include <random>
#include <vector>

#include "fuzz/CodecRoundTrip.h"
#include "fuzz/Property.h"
#include "remote/CodecTable.h"
#include "remote/EventStamp.h"
#include "remote/Frame.h"

namespace {

using fuzz::hold;
using host::Frame;
using host::FrameKind;
using host::FrameReader;

// The first frame of `bytes`, cut by the rules of the wire format. Without a frame, it is
// incomplete or `broken`.
struct Cut {
  std::optional<Frame> frame;
  std::size_t length = 0;
  bool broken = false;
};

Cut cutFrame(std::string_view bytes) {
  if (bytes.size() < 4) return {};
  std::size_t length = 0;
  for (const char c : bytes.substr(0, 4)) length = length * 256 + static_cast<unsigned char>(c);
  if (length < 5 || length > 1024 * 1024) return {std::nullopt, 0, true};
  if (bytes.size() > 4 && static_cast<unsigned char>(bytes[4]) > 7) return {std::nullopt, 0, true};
  if (bytes.size() < 4 + length) return {};
  std::uint32_t id = 0;
  for (const char c : bytes.substr(5, 4)) id = id * 256 + static_cast<unsigned char>(c);
  const Frame frame{static_cast<FrameKind>(bytes[4]), id, bytes.substr(9, length - 5)};
  return {frame, 4 + length, false};
}

// Reads a stream in pieces, and compares its frames with those of the whole stream.
class Connection {
 public:
  explicit Connection(std::string_view stream) : m_ahead(stream) {}

  void receive(std::string_view piece) {
    while (!piece.empty()) {
      const auto space = m_reader.space();
      hold(!space.empty(), "there is space for the next byte");
      hold(space.size() <= 2 * std::max<std::size_t>(m_received, 4096),
           "the buffer grows only with the bytes received");
      const std::size_t size = std::min(space.size(), piece.size());
      std::copy_n(piece.begin(), size, space.begin());
      m_reader.commit(size);
      m_received += size;
      piece.remove_prefix(size);
      takeFrames();
    }
  }

  void end() {
    const Cut next = cutFrame(m_ahead);
    hold(m_broken == next.broken, "a wrong frame breaks the stream as soon as it is detectable");
    hold(m_broken || !next.frame, "no complete frame is held back");
    if (!m_broken) hold(m_reader.midFrame() == !m_ahead.empty(), "a partial frame is reported");
  }

 private:
  void takeFrames() {
    Frame frame;
    FrameReader::Outcome outcome{};
    while ((outcome = m_reader.next(frame)) == FrameReader::Outcome::frame) take(frame);
    if (outcome != FrameReader::Outcome::broken) return;
    hold(m_broken || cutFrame(m_ahead).broken, "only a wrong frame breaks the stream");
    hold(fuzz::isShortLine(m_reader.fault()), "a fault is one line", m_reader.fault());
    m_broken = true;
  }

  void take(const Frame& frame) {
    hold(!m_broken, "a broken stream stays broken");
    const Cut cut = cutFrame(m_ahead);
    hold(cut.frame && cut.frame->kind == frame.kind && cut.frame->id == frame.id &&
             cut.frame->payload == frame.payload,
         "the pieces yield the frames of the whole stream", frame.payload);
    hold(host::encodeFrame(frame) == m_ahead.substr(0, cut.length),
         "a frame is encoded to the bytes read");
    m_ahead.remove_prefix(cut.length);
    useFrame(frame);
  }

  void useFrame(const Frame& frame) {
    if (frame.kind == FrameKind::hello) {
      if (auto* const codec = m_codecs.find(frame.payload)) m_codec = codec;
    } else if (frame.kind <= FrameKind::event) {
      fuzz::holdCodec(*m_codec, frame.payload);
    } else if (frame.kind == FrameKind::timedEvent) {
      useTimedEvent(frame.payload);
    }
  }

  void useTimedEvent(std::string_view payload) {
    const auto time = host::decodeEventStamp(payload);
    if (!time) return;
    const host::EventStampBytes bytes = host::encodeEventStamp(*time);
    hold(payload.starts_with(std::string_view(bytes.data(), bytes.size())),
         "a time is encoded to the bytes read", payload);
    fuzz::holdCodec(*m_codec, payload.substr(host::kEventStampSize));
  }

  std::string_view m_ahead;  // the rest of the stream, after the frames read so far
  host::CodecTable m_codecs;
  MessageCodec* m_codec = m_codecs.find(host::kDefaultCodec);
  FrameReader m_reader;
  std::size_t m_received = 0;
  bool m_broken = false;
};

}  // namespace

// The first bytes say into what pieces the stream is cut, and how often the rest is repeated, to
// make a stream longer than a buffer.
void fuzz::property(std::string_view input) {
  constexpr std::size_t kLongest = 256 * 1024;
  Reader reader(input);
  std::minstd_rand chance(reader.number<std::uint16_t>());
  const std::size_t longest = (std::size_t{1} + reader.byte()) * 4;
  std::size_t times = std::size_t{1} + reader.byte();
  std::string stream;
  for (const std::string_view once = reader.rest(); times > 0 && stream.size() < kLongest; --times)
    stream += once;
  Connection connection(stream);
  Reader pieces(stream);
  while (!pieces.atEnd()) connection.receive(pieces.take(1 + chance() % longest));
  connection.end();
}
