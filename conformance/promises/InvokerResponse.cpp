#include "InvokerResponse.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "Method.h"
#include "RemoteEnd.h"

namespace {

static_assert(std::has_virtual_destructor_v<InvokerResponse>, "the invoker deletes it");

class InvokerResponsePromise : public conformance::RemotePromise {};

TEST_F(InvokerResponsePromise, NamesTheCodecOfTheRequest) {
  promises("The name of the request's codec, null-terminated; valid as long as the object.");
  connect();
  const auto known = platform().codecs();
  ASSERT_EQ(m_invoker.requests.size(), 1U);
  EXPECT_EQ(std::count(known.begin(), known.end(), m_invoker.requests[0].codec), 1);
}

TEST_F(InvokerResponsePromise, NamesTheCallingPeer) {
  promises("Names the calling peer, null-terminated; valid as long as the object.");
  const Client client = connect();
  const Client other = connect();
  replyTo(client, Method("again", Method::call));
  ASSERT_FALSE(m_invoker.requests.empty());
  const std::string again = m_invoker.requests.back().address;
  EXPECT_FALSE(client.address.empty());
  EXPECT_EQ(again, client.address);
  EXPECT_NE(other.address, client.address);
}

TEST_F(InvokerResponsePromise, SendsTheReplyToItsCaller) {
  promises("Sends the encoded reply; the bytes are copied.");
  const Client client = connect();
  connect();
  Method call("echo", Method::call);
  call.addIntParameter("number", -5, Parameter::in);
  call.addStringParameter("text", std::string("a\nb\"'<caf\xC3\xA9>"), Parameter::in);
  call.addStringParameter("long", std::string(100'000, 'x'), Parameter::in);
  EXPECT_EQ(replyTo(client, call), "reply echo ->number=-5 ->text='a\nb\"'<caf\xC3\xA9>' ->long='" +
                                       std::string(100'000, 'x') + "'");
}

}  // namespace
