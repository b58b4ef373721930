#include "remote/Frame.h"

#include <algorithm>
#include <cstring>

namespace host {
namespace {

constexpr std::size_t kLengthSize = 4;
constexpr std::size_t kMinFrameLength = kFrameHeaderSize - kLengthSize;
constexpr std::size_t kFirstBuffer = 4096;  // fits the usual call; one for each client
constexpr std::size_t kKeptBuffer = 65536;  // a larger one is freed after its frame

void putBigEndian(char* to, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) *to++ = static_cast<char>(number >> shift);
}

std::uint32_t getBigEndian(const char* from) {
  std::uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = number << 8 | static_cast<unsigned char>(from[i]);
  return number;
}

}  // namespace

std::array<char, kFrameHeaderSize> frameHeader(FrameKind kind, std::uint32_t id,
                                               std::size_t payload) {
  std::array<char, kFrameHeaderSize> header;
  putBigEndian(header.data(), static_cast<std::uint32_t>(payload + kMinFrameLength));
  header[kLengthSize] = static_cast<char>(kind);
  putBigEndian(header.data() + kLengthSize + 1, id);
  return header;
}

std::string encodeFrame(const Frame& frame) {
  const auto header = frameHeader(frame.kind, frame.id, frame.payload.size());
  std::string bytes(header.data(), header.size());
  return bytes.append(frame.payload);
}

FrameReader::FrameReader() : m_buffer(kFirstBuffer) {}

std::span<char> FrameReader::space() {
  if (m_begin == m_end) m_begin = m_end = 0;
  if (m_end == 0 && m_buffer.size() > kKeptBuffer) std::vector<char>(kFirstBuffer).swap(m_buffer);
  if (m_end == m_buffer.size()) makeRoom();
  return std::span(m_buffer).subspan(m_end);
}

void FrameReader::makeRoom() {
  if (m_begin == 0) {
    m_buffer.resize(m_buffer.size() * 2);
    return;
  }
  std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
  m_end -= m_begin;
  m_begin = 0;
}

void FrameReader::commit(std::size_t bytes) {
  m_end += bytes;
}

FrameReader::Outcome FrameReader::next(Frame& frame) {
  if (!m_fault.empty()) return Outcome::broken;
  const std::size_t held = m_end - m_begin;
  if (held < kLengthSize) return Outcome::needMore;
  const char* const start = m_buffer.data() + m_begin;
  const std::size_t length = getBigEndian(start);
  if (length < kMinFrameLength) return refuse("frame of " + std::to_string(length) + " bytes");
  if (length > kMaxFrameLength) {
    return refuse("frame of " + std::to_string(length) + " bytes announced, " +
                  std::to_string(kMaxFrameLength) + " is the limit");
  }
  if (held <= kLengthSize) return Outcome::needMore;
  const auto kind = static_cast<unsigned char>(start[kLengthSize]);
  if (kind > static_cast<unsigned char>(FrameKind::timedEvent)) {
    return refuse("frame of unknown kind " + std::to_string(kind));
  }
  if (held < kLengthSize + length) return Outcome::needMore;
  frame = {static_cast<FrameKind>(kind),
           getBigEndian(start + kLengthSize + 1),
           {start + kFrameHeaderSize, length - kMinFrameLength}};
  m_begin += kLengthSize + length;
  return Outcome::frame;
}

FrameReader::Outcome FrameReader::refuse(std::string fault) {
  m_fault = std::move(fault);
  return Outcome::broken;
}

}  // namespace host
