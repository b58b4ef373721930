#include "remote/Outbox.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <thread>
#include <vector>

#include "base/Descriptor.h"
#include "support/NoMemory.h"

namespace host {
namespace {

// An outbox on one end of a pair of sockets; the test reads at the other.
class OutboxWithReader : public testing::Test {
 protected:
  OutboxWithReader() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) std::abort();
    m_near.reset(ends[0]);
    m_far.reset(ends[1]);
    m_outbox.emplace(ends[0], [this] { ++m_wakeups; });
  }

  bool send(std::uint32_t id, std::size_t bytes) {
    return m_outbox->send({FrameKind::event, id, std::string(bytes, 'x')});
  }

  // The ids of all frames that can be read now.
  std::vector<std::uint32_t> read() {
    std::vector<std::uint32_t> ids;
    for (;;) {
      Frame frame;
      while (m_reader.next(frame) == FrameReader::Outcome::frame) ids.push_back(frame.id);
      const auto space = m_reader.space();
      const ssize_t got = ::recv(m_far.get(), space.data(), space.size(), MSG_DONTWAIT);
      if (got <= 0) return ids;
      m_reader.commit(static_cast<std::size_t>(got));
    }
  }

  // Sends frames until one does not fit into the socket; returns how many were accepted.
  std::uint32_t fill(std::size_t bytes) {
    std::uint32_t id = 0;
    while (m_outbox->idle()) EXPECT_TRUE(send(id++, bytes));
    return id;
  }

  Descriptor m_near;
  Descriptor m_far;
  FrameReader m_reader;
  std::atomic<int> m_wakeups = 0;
  std::optional<Outbox> m_outbox;
};

TEST_F(OutboxWithReader, SendsAtOnceWhatTheSocketAccepts) {
  EXPECT_TRUE(send(1, 100));
  EXPECT_TRUE(send(2, 0));
  EXPECT_EQ(read(), (std::vector<std::uint32_t>{1, 2}));
  EXPECT_EQ(m_wakeups, 0);
  EXPECT_TRUE(m_outbox->flush());
}

TEST_F(OutboxWithReader, WithoutMemorySendsHeldAnswersBeforeTheNextFrame) {
  const std::string payload(400, 'x');
  m_outbox->hold();
  for (std::uint32_t id = 1; id <= 2; ++id) {
    const support::NoMemory none;
    EXPECT_TRUE(m_outbox->send({FrameKind::reply, id, payload}));
  }
  EXPECT_EQ(read(), std::vector<std::uint32_t>{1});
  EXPECT_TRUE(m_outbox->flush());
  EXPECT_EQ(read(), std::vector<std::uint32_t>{2});
}

TEST_F(OutboxWithReader, WithoutMemoryForAFrameSendsTheHeldAnswersAndNoPartOfIt) {
  const std::string payload(400, 'x');
  const std::string larger(600, 'x');
  m_outbox->hold();
  EXPECT_TRUE(m_outbox->send({FrameKind::reply, 1, payload}));
  {
    const support::NoMemory none;
    EXPECT_FALSE(m_outbox->send({FrameKind::reply, 2, larger}));
  }
  EXPECT_EQ(m_outbox->state(), Outbox::State::failed);
  EXPECT_EQ(read(), std::vector<std::uint32_t>{1});
}

TEST_F(OutboxWithReader, QueuesTheRestAndKeepsTheOrder) {
  const std::uint32_t accepted = fill(10000);
  EXPECT_EQ(m_wakeups, 1);
  EXPECT_TRUE(send(accepted, 10));
  EXPECT_TRUE(send(accepted + 1, 10));
  EXPECT_EQ(m_wakeups, 1) << "once for the queue";
  EXPECT_FALSE(m_outbox->flush());
  std::vector<std::uint32_t> all;
  while (all.size() < accepted + 2) {
    const auto some = read();
    ASSERT_FALSE(some.empty());
    all.insert(all.end(), some.begin(), some.end());
    static_cast<void>(m_outbox->flush());
  }
  for (std::uint32_t id = 0; id < accepted + 2; ++id) EXPECT_EQ(all[id], id);
  EXPECT_TRUE(m_outbox->idle());
}

// The socket has room again, and the loop has not flushed yet: neither a small nor a large frame
// may use that room.
TEST_F(OutboxWithReader, KeepsTheOrderBehindAPartlySentFrame) {
  const std::uint32_t accepted = fill(10000);
  std::vector<std::uint32_t> all = read();
  EXPECT_TRUE(send(accepted, 10));
  EXPECT_TRUE(send(accepted + 1, 5000));
  for (const std::uint32_t id : read()) all.push_back(id);
  EXPECT_LT(all.size(), accepted) << "one is partly sent";
  for (int i = 0; i < 100 && !m_outbox->idle(); ++i) {
    static_cast<void>(m_outbox->flush());
    for (const std::uint32_t id : read()) all.push_back(id);
  }
  ASSERT_EQ(all.size(), accepted + 2);
  for (std::uint32_t id = 0; id < accepted + 2; ++id) EXPECT_EQ(all[id], id);
}

TEST_F(OutboxWithReader, OverflowsBeyondItsLimitAndNotBefore) {
  fill(10000);
  std::size_t queued = 0;
  while (queued + 200009 <= Outbox::kMaxQueued - 10009) {
    ASSERT_TRUE(send(1, 200000));
    queued += 200009;
  }
  EXPECT_EQ(m_outbox->state(), Outbox::State::open);
  EXPECT_FALSE(send(2, Outbox::kMaxQueued - queued));
  EXPECT_EQ(m_outbox->state(), Outbox::State::overflowed);
  EXPECT_EQ(m_wakeups, 2);
  EXPECT_FALSE(send(3, 0));
  EXPECT_EQ(m_wakeups, 2) << "once for the overflow";
}

TEST_F(OutboxWithReader, RefusesAFrameThatIsTooLongAndStaysOpen) {
  EXPECT_FALSE(send(1, kMaxPayload + 1));
  EXPECT_TRUE(send(2, 1));
  EXPECT_EQ(read(), std::vector<std::uint32_t>{2});
}

TEST_F(OutboxWithReader, IsBrokenWhenTheReaderHasDisconnected) {
  m_far.reset();
  EXPECT_FALSE(send(1, 1));
  EXPECT_EQ(m_outbox->state(), Outbox::State::broken);
  EXPECT_EQ(m_wakeups, 1);
  EXPECT_TRUE(m_outbox->flush());
}

TEST_F(OutboxWithReader, FailsWhenTheSystemCannotSend) {
  const Descriptor notASocket(::open("/dev/null", O_WRONLY | O_CLOEXEC));
  Outbox outbox(notASocket.get(), [this] { ++m_wakeups; });
  EXPECT_FALSE(outbox.send({FrameKind::event, 1, "x"}));
  EXPECT_EQ(outbox.state(), Outbox::State::failed);
  EXPECT_EQ(outbox.error(), ENOTSOCK);
  EXPECT_EQ(m_wakeups, 1);
}

TEST_F(OutboxWithReader, SendsNothingAfterAFailure) {
  m_outbox->fail(ENOMEM);
  EXPECT_FALSE(send(1, 1));
  EXPECT_EQ(m_outbox->state(), Outbox::State::failed);
  EXPECT_EQ(m_outbox->error(), ENOMEM);
  m_outbox->fail(EIO);
  EXPECT_EQ(m_outbox->error(), ENOMEM) << "the first error stays";
  EXPECT_EQ(m_wakeups, 1);
}

TEST_F(OutboxWithReader, DoesNothingOnceClosed) {
  fill(10000);
  m_outbox->close();
  m_near.reset();
  EXPECT_FALSE(send(1, 1));
  m_outbox->wakeLoop();
  EXPECT_TRUE(m_outbox->flush());
  EXPECT_EQ(m_wakeups, 1);
}

TEST_F(OutboxWithReader, KeepsFramesOfManyThreadsWhole) {
  constexpr std::uint32_t kThreads = 4;
  constexpr std::uint32_t kFrames = 500;
  std::vector<std::thread> threads;
  for (std::uint32_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([this, thread] {
      for (std::uint32_t i = 0; i < kFrames; ++i) send(thread << 16 | i, i % 300);
    });
  }
  std::vector<std::uint32_t> next(kThreads, 0);
  std::size_t count = 0;
  while (count < kThreads * kFrames) {
    static_cast<void>(m_outbox->flush());
    for (const std::uint32_t id : read()) {
      EXPECT_EQ(next[id >> 16]++, id & 0xffff) << "in the order of its thread";
      ++count;
    }
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace host
