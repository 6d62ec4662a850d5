#include "protocol/chunk_end.h"

#include <gtest/gtest.h>

#include <string>

#include "support/wire.h"

namespace velmora {
namespace {

std::string descriptor(std::size_t declared, std::size_t present) {
  return descriptor_header("g", 'g', 'g', 'g', declared) + std::string(present, 'p');
}
std::string whole(std::size_t payload) { return descriptor(payload, payload); }

TEST(ChunkEnd, LacksWhatTheLastDescriptorDeclares) {
  struct Case {
    std::string chunk;
    std::size_t lacks;
  };
  const std::string two = whole(0) + whole(32'000);
  const Case cases[] = {
      {"", 0},
      {whole(0).substr(0, 22), 0},
      {whole(0), 0},
      {two, 0},
      {two + descriptor(300, 299), 1},
      {two + descriptor(32'000, 0), 32'000},
      {two + "x", 22},  // a header that is not whole says nothing about its payload
      {two + whole(0).substr(0, 22), 1},
      {descriptor(32'001, 0), kEndUnknown},
      {two + descriptor(0xFFFFFFFF, 10), kEndUnknown},
      {descriptor(33'000, 10) + descriptor(300, 10), kEndUnknown},
      {"GNUTELLA CONNECT/0.4\n\n", 0},
      {"GET /get/1/name HTTP/1.0\r\n\r\n", kEndUnknown},
      {"GET " + descriptor(300, 0).substr(4), kEndUnknown},
  };
  for (const Case& one : cases) EXPECT_EQ(lacking_bytes(one.chunk), one.lacks) << one.chunk;
}

}  // namespace
}  // namespace velmora
