#pragma once

#include <cstdlib>
#include <memory>

namespace velmora::test {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

/// An answer of the X server, or nothing.
template <typename Answer>
class Reply : public std::unique_ptr<Answer, FreeReply> {
  public:
    explicit Reply(Answer* answer) : std::unique_ptr<Answer, FreeReply>(answer) {}
};

}  // namespace velmora::test
