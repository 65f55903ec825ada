#include <gtest/gtest.h>

#include "tokenize/tokenizer.h"

namespace quillon::lingomat {
namespace {

std::string shebang(const std::string& text) {
  return Tokenizer(Tokenizer::Opts{}).extract_shebang(text);
}

std::vector<std::string> tag(const std::string& text) {
  return Tokenizer(Tokenizer::Opts{}).extract_sgml_tokens(text);
}

TEST(ExtractShebang, InterpreterForms) {
  EXPECT_EQ(shebang("#!/bin/sh"), "sh");
  EXPECT_EQ(shebang("#! /usr/bin/perl -w"), "perl");
  EXPECT_EQ(shebang("#!\t/usr/bin/python2.7\nprint"), "python");
  EXPECT_EQ(shebang("#!/usr/bin/env python3"), "python");
  EXPECT_EQ(shebang("#!/usr/bin/env FOO=1 BAR=2 ruby1.9"), "ruby");
  EXPECT_EQ(shebang("#!/usr/bin/env node"), "node");
  EXPECT_EQ(shebang("#!/usr/bin/env -S deno run"), "-S");
  EXPECT_EQ(shebang("#!/opt/ruby2/bin/ruby"), "ruby");
  EXPECT_EQ(shebang("#!/usr/bin/3to2"), "");
  EXPECT_EQ(shebang("#!perl"), "perl");
  EXPECT_EQ(shebang("#!/usr/bin/env  perl5"), "perl");
  EXPECT_EQ(shebang("#!/usr/bin/env /opt/bin/tclsh8.6"), "tclsh");
  EXPECT_EQ(shebang("#!C:\\Perl\\bin\\perl.exe"), "C:\\Perl\\bin\\perl.exe");
}

TEST(ExtractShebang, NoUsableLine) {
  EXPECT_EQ(shebang(""), "");
  EXPECT_EQ(shebang("# comment"), "");
  EXPECT_EQ(shebang(" #!/bin/sh"), "");
  EXPECT_EQ(shebang("\xEF\xBB\xBF#!/bin/sh"), "");
  EXPECT_EQ(shebang("#!\n/bin/sh"), "");
  EXPECT_EQ(shebang("#!/usr/bin/env"), "");
  EXPECT_EQ(shebang("#!/usr/bin/env\nruby"), "");
}

TEST(ExtractShebang, OnlyTheFirstLineIsRead) {
  EXPECT_EQ(shebang("#!/usr/bin/env python\n#!/bin/sh\n#!/usr/bin/perl\n"), "python");
  EXPECT_EQ(shebang("x\n#!/bin/sh"), "");
}

TEST(ExtractSgmlTokens, AttributesAndValues) {
  EXPECT_EQ(tag("<a href=\"x\" title='y z' disabled>"),
            (std::vector<std::string>{"<a>", "href=", "title=", "disabled"}));
  EXPECT_EQ(tag("<p class = \"x\">"), (std::vector<std::string>{"<p>", "class", "x"}));
  EXPECT_EQ(tag("<a href=1>"), (std::vector<std::string>{"<a>", "href="}));
  EXPECT_EQ(tag("<a href=#top id=x>"), (std::vector<std::string>{"<a>", "href=", "id="}));
  EXPECT_EQ(tag("<input\tvalue='it\\'s'>"), (std::vector<std::string>{"<input>", "value="}));
}

TEST(ExtractSgmlTokens, EmptyQuotedValueSwallowsTheNextName) {
  EXPECT_EQ(tag("<a b=\"\" c=\"d\">"), (std::vector<std::string>{"<a>", "b=", "d"}));
}

TEST(ExtractSgmlTokens, TagNames) {
  EXPECT_EQ(tag("</div>"), std::vector<std::string>{"</div>"});
  EXPECT_EQ(tag("<br/>"), std::vector<std::string>{"<br/>"});
  EXPECT_EQ(tag("<?xml version=\"1.0\"?>"), (std::vector<std::string>{"<?xml>", "version="}));
  EXPECT_EQ(tag("<!DOCTYPE html>"), (std::vector<std::string>{"<!DOCTYPE>", "html"}));
  EXPECT_EQ(tag("<b>after"), std::vector<std::string>{"<b>"});
  EXPECT_EQ(tag(""), std::vector<std::string>{});
}

}  // namespace
}  // namespace quillon::lingomat
