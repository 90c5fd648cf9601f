#include "tools/orblink_web/reader/message.h"

#include <gtest/gtest.h>

namespace web {
namespace {

TEST(Message, ComesOutAsItWentIn)
{
    Message sent;
    sent.answer = Answer{"port/0:1/counters", 8, "{\n \"a\": \"\\u0001\"\n}\n", 1234567890123};
    sent.log = {"one \"line\"", "another\nline"};
    const std::string line = Encoded(sent);
    ASSERT_EQ(line.find('\n'), line.size() - 1);
    const auto got = Decoded(line.substr(0, line.size() - 1));
    ASSERT_TRUE(got && got->answer);
    EXPECT_EQ(got->answer->path, sent.answer->path);
    EXPECT_EQ(got->answer->code, sent.answer->code);
    EXPECT_EQ(got->answer->text, sent.answer->text);
    EXPECT_EQ(got->answer->when, sent.answer->when);
    EXPECT_EQ(got->log, sent.log);
}

TEST(Message, IsNothingWhenItIsNone)
{
    for (const char* line : {"", "{", "[]", "{}", "{\"log\":1}", "{\"log\":[],\"answer\":{}}",
                             "{\"log\":[],\"answer\":{\"path\":1}}"})
        EXPECT_FALSE(Decoded(line)) << line;
    const auto lines = Decoded("{\"log\":[\"a\"]}");
    ASSERT_TRUE(lines);
    EXPECT_FALSE(lines->answer);
}

}  // namespace
}  // namespace web
