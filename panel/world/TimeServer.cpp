#include "world/TimeServer.h"

#include <boost/asio/buffer.hpp>
#include <boost/endian/conversion.hpp>
#include <string>

#include "base/Error.h"

namespace panel {
namespace {

using boost::asio::ip::udp;

constexpr int kClientMode = 3;
constexpr unsigned kServerMode = 4;
constexpr unsigned kModeBits = 7;
constexpr unsigned kVersionBits = 0x38;
constexpr std::size_t kReference = 16, kOriginate = 24, kReceive = 32, kTransmit = 40;
constexpr std::int64_t kNtpEpoch = 2208988800;  // seconds from 1900 to 1970

// Seconds since 1900, and 2^-32 seconds. After 2036 it wraps, as RFC 4330, 3 has it.
void putTime(unsigned char* at, std::chrono::nanoseconds sinceEpoch) {
  constexpr std::uint64_t kSecond = 1000000000;
  const auto whole = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
  const auto seconds = static_cast<std::uint64_t>(whole.count() + kNtpEpoch);
  const auto rest = static_cast<std::uint64_t>((sinceEpoch - whole).count());
  boost::endian::store_big_u64(at, (seconds << 32U) | ((rest << 32U) / kSecond));
}

udp::socket socketAt(boost::asio::io_context& context, std::uint16_t port) {
  try {
    return {context, udp::endpoint(boost::asio::ip::address_v4::loopback(), port)};
  } catch (const boost::system::system_error& error) {
    throw host::Error("no time server at port " + std::to_string(port) + ": " +
                      error.code().message() + "; choose another port");
  }
}

}  // namespace

TimeServer::TimeServer(boost::asio::io_context& context, std::uint16_t port)
    : m_socket(socketAt(context, port)) {
  receive();
}

void TimeServer::answer(std::chrono::seconds error) {
  m_silent = false;
  m_error = error;
}

void TimeServer::receive() {
  m_socket.async_receive_from(
      boost::asio::buffer(m_request), m_client,
      [this](const boost::system::error_code& error, std::size_t size) {
        if (error == boost::asio::error::operation_aborted) return;
        if (!error && size >= kPacket && (m_request[0] & kModeBits) == kClientMode && !m_silent) {
          reply();
        }
        receive();
      });
}

void TimeServer::reply() {
  constexpr unsigned char kPrimary = 1;  // stratum
  m_reply.fill(0);
  m_reply[0] = static_cast<unsigned char>((m_request[0] & kVersionBits) | kServerMode);
  m_reply[1] = kPrimary;
  const auto now = std::chrono::system_clock::now().time_since_epoch() + m_error;
  std::copy_n(m_request.begin() + kTransmit, 8, m_reply.begin() + kOriginate);
  for (const std::size_t at : {kReference, kReceive, kTransmit}) putTime(m_reply.data() + at, now);
  boost::system::error_code ignored;  // the client asks again
  m_socket.send_to(boost::asio::buffer(m_reply), m_client, 0, ignored);
}

}  // namespace panel
