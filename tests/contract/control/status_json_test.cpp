#include <string>

#include <gtest/gtest.h>

#include "control/status_report.h"

namespace {

using platform::status_as_json;
using platform::StatusNode;

TEST(StatusJson, EveryKindOfValueHasItsJson)
{
    EXPECT_EQ(status_as_json({{"nothing", {}},
                              {"truth", true},
                              {"whole", int64_t{-5}},
                              {"real", 2.5},
                              {"text", std::string("x")},
                              {"texts", std::vector<std::string>{"a", "b"}},
                              {"group", std::vector<StatusNode>{{"in", false}}},
                              {"empty", std::vector<StatusNode>{}}}),
              "{\"nothing\": null, \"truth\": true, \"whole\": -5, \"real\": 2.5, "
              "\"text\": \"x\", \"texts\": [\"a\", \"b\"], \"group\": {\"in\": false}, "
              "\"empty\": {}}\n");
}

TEST(StatusJson, AnyBytesMakeValidJson)
{
    EXPECT_EQ(status_as_json({{"k", std::string("\"\\\n\x01\xFF\xC3\xA4\x7F\xED\xA0\x80")}}),
              "{\"k\": \"\\\"\\\\\\u000a\\u0001\\udcff\xC3\xA4\\u007f\\udced\\udca0\\udc80\"}\n");
}

} // namespace
