#include "server/Connection.h"

#include <array>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <chrono>
#include <deque>
#include <limits>
#include <memory>
#include <optional>
#include <sstream>

namespace panel {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;
using beast::error_code;

constexpr auto kReadLimit = std::chrono::seconds(10);   // for a whole request, or what is dropped
constexpr auto kIdleLimit = std::chrono::seconds(60);   // until the next request
constexpr auto kWriteLimit = std::chrono::seconds(30);  // for an answer, or a message

// The messages that a page has not read yet. Ends when the page is gone or too slow; its browser
// then asks again, and gets the present state.
class EventStream : public std::enable_shared_from_this<EventStream> {
 public:
  EventStream(Stream stream, Place place)
      : m_stream(std::move(stream)), m_place(std::move(place)) {}

  void open(const Site& site) {
    Response head = responseOf(http::status::ok, "text/event-stream", "retry: 500\n\n");
    head.keep_alive(false);
    add(std::make_shared<const std::string>((std::ostringstream() << head).str()));
    watchEnd();
    site.follow([stream = weak_from_this()](const Message& message) {
      const auto self = stream.lock();
      return self && self->add(message);
    });
    m_limit = m_unread + kMostUnread;
  }

 private:
  using Message = std::shared_ptr<const std::string>;

  bool add(const Message& message) {
    m_unread += message->size();
    if (m_unread > m_limit) close();
    if (m_closed) return false;
    m_messages.push_back(message);
    if (m_messages.size() == 1) write();
    return true;
  }

  void write() {
    m_stream.expires_after(kWriteLimit);
    boost::asio::async_write(
        m_stream, boost::asio::buffer(*m_messages.front()),
        [self = shared_from_this()](error_code error, std::size_t) { self->written(error); });
  }

  void written(error_code error) {
    if (error || m_closed) return close();
    m_unread -= m_messages.front()->size();
    m_messages.pop_front();
    if (!m_messages.empty()) return write();
    m_stream.expires_never();
  }

  // A page sends nothing: whatever can be read ends the stream.
  void watchEnd() {
    m_stream.socket().async_read_some(
        boost::asio::buffer(m_byte),
        [self = shared_from_this()](error_code, std::size_t) { self->close(); });
  }

  void close() {
    m_closed = true;
    m_stream.close();
  }

  Stream m_stream;
  const Place m_place;
  std::deque<Message> m_messages;
  std::size_t m_unread = 0;                                       // bytes
  std::size_t m_limit = std::numeric_limits<std::size_t>::max();  // the start may be long
  std::array<char, 1> m_byte{};
  bool m_closed = false;
};

class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(boost::asio::generic::stream_protocol::socket socket, const Site& site, Place place)
      : m_stream(std::move(socket)), m_site(site), m_place(std::move(place)) {}

  void readHead(std::chrono::seconds limit) {
    m_parser.emplace();
    m_parser->header_limit(kMostHead);
    m_parser->body_limit(kMostBody);
    m_stream.expires_after(limit);
    http::async_read_header(
        m_stream, m_buffer, *m_parser,
        [self = shared_from_this()](error_code error, std::size_t) { self->readBody(error); });
  }

 private:
  void readBody(error_code error) {
    if (error) return end(error);
    if (auto refusal = m_site.refusal(m_parser->get())) {
      refusal->keep_alive(false);  // its body is not read
      return send(*std::move(refusal));
    }
    m_stream.expires_after(kReadLimit);
    http::async_read(
        m_stream, m_buffer, *m_parser,
        [self = shared_from_this()](error_code failure, std::size_t) { self->answer(failure); });
  }

  void answer(error_code error) {
    if (error) return end(error);
    m_stream.expires_never();
    const Request request = m_parser->release();
    // The body of an answer to HEAD, which is none, would be read as the next answer.
    const bool keep = request.keep_alive() && request.method() != http::verb::head;
    if (request.method() == http::verb::get && request.target() == "/feed") {
      return std::make_shared<EventStream>(std::move(m_stream), std::move(m_place))->open(m_site);
    }
    m_site.answer(request, [self = shared_from_this(), keep](Response response) {
      response.keep_alive(keep);
      self->send(std::move(response));
    });
  }

  // What the client did wrong, where HTTP has a status for it.
  void end(error_code error) {
    const bool malformed =
        error.category() == http::make_error_code(http::error::bad_method).category();
    if (!malformed || error == http::error::end_of_stream) return;
    auto status = http::status::bad_request;
    if (error == http::error::body_limit) status = http::status::payload_too_large;
    if (error == http::error::header_limit) status = http::status::request_header_fields_too_large;
    Response response = lineResponse(
        status, "a request is HTTP, with a head of at most 8 KiB and a body of at most 1 MiB");
    response.keep_alive(false);
    send(std::move(response));
  }

  void send(Response response) {
    response.prepare_payload();
    m_response.emplace(std::move(response));
    m_stream.expires_after(kWriteLimit);
    http::async_write(m_stream, *m_response,
                      [self = shared_from_this()](error_code error, std::size_t) {
                        if (error) return;
                        if (self->m_response->keep_alive()) return self->readHead(kIdleLimit);
                        self->m_stream.socket().shutdown(Stream::socket_type::shutdown_send, error);
                        self->m_stream.expires_after(kReadLimit);
                        self->drop();
                      });
  }

  // To close before the client has sent everything could take the answer from it (RFC 9112, 9.6).
  void drop() {
    m_buffer.clear();
    m_stream.async_read_some(m_buffer.prepare(kMostHead),
                             [self = shared_from_this()](error_code error, std::size_t) {
                               if (!error) self->drop();
                             });
  }

  Stream m_stream;
  const Site& m_site;
  Place m_place;
  beast::flat_buffer m_buffer;
  std::optional<http::request_parser<http::string_body>> m_parser;
  std::optional<Response> m_response;
};

}  // namespace

void serve(boost::asio::generic::stream_protocol::socket socket, const Site& site, Place place) {
  std::make_shared<Connection>(std::move(socket), site, std::move(place))->readHead(kReadLimit);
}

}  // namespace panel
