#include "check/CheckCommand.h"

#include <gtest/gtest.h>

TEST(CheckCommandOutput, JsonIsAsciiWithEscapes)
{
    std::vector<CheckResult> results = {
        {WideString(u"dir\\\"a\".wav"), WideString(u"チェック完了しました。\r\n"), false},
        {WideString(u"b.wav"), WideString(u"PCMではありません。 [0003]\r\n"), true},
    };
    EXPECT_EQ(FormatJson(results),
              "[\n"
              "  {\"path\": \"dir\\\\\\\"a\\\".wav\", \"report\": "
              "\"\\u30c1\\u30a7\\u30c3\\u30af\\u5b8c\\u4e86\\u3057\\u307e\\u3057\\u305f\\u3002\\r\\n\", "
              "\"hasError\": false},\n"
              "  {\"path\": \"b.wav\", \"report\": \"PCM\\u3067\\u306f\\u3042\\u308a\\u307e\\u305b\\u3093\\u3002 "
              "[0003]\\r\\n\", \"hasError\": true}\n"
              "]\n");
    EXPECT_EQ(FormatJson({}), "[]\n");
}

TEST(CheckCommandOutput, TextTakesThePlatformLineEnd)
{
    std::vector<CheckResult> one = {{WideString(u"a.wav"), WideString(u"x\r\ny\r\n"), true}};
    EXPECT_EQ(FormatText(one, "\n"), "x\ny\n");
    EXPECT_EQ(FormatText(one, "\r\n"), "x\r\ny\r\n");

    std::vector<CheckResult> two = {one[0], {WideString(u"b.wav"), WideString(u"ファイルがありません。\r\n"), true}};
    EXPECT_EQ(FormatText(two, "\r\n"),
              "== a.wav\r\nx\r\ny\r\n== b.wav\r\n\xE3\x83\x95\xE3\x82\xA1\xE3\x82\xA4\xE3\x83\xAB\xE3\x81\x8C\xE3\x81\x82"
              "\xE3\x82\x8A\xE3\x81\xBE\xE3\x81\x9B\xE3\x82\x93\xE3\x80\x82\r\n");
}
