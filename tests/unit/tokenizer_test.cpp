// The tokenizer's rules on hand-picked texts, which the reference must follow too; and inputs
// that once cost far more than their size.
#include "tokenize/tokenizer.h"

#include <gtest/gtest.h>

#include <clocale>
#include <locale>

#include "reference_engine.h"
#include "sample_texts.h"

namespace quillon::lingomat {
namespace {

using Tokens = std::vector<std::string>;

struct TokenRow {
  std::string text;
  Tokens tokens;
  Tokenizer::Opts limits{0, 0};
};

TEST(Tokenizer, RulesOnHandPickedTexts) {
  const std::vector<TokenRow> rows = {
      {" = \n\t==  =\r\n,:!>?$^~`\\", {}},
      {"int a = 0x1F; /* c */ b++;", {"int", "a", ";", "b", "+", "+", ";"}},
      {"x = (*p); y; *) z", {"x", "z"}},  // "(*" opens a comment even in C
      {"if (a && b || c) x <<= 1;", {"if", "(", "a", "&&", "b", "||", "c", ")", "x", "<<", ";"}},
      {"x\n#!/bin/sh\ny", {"x", "SHEBANG#!sh", "y"}},
      {"#!   \nx", {"x"}},
      {"#!\nx", {"#", "x"}},
      {"#!/usr/bin/3to2\nx", {"x"}},
      {"#! /usr/bin/perl -w\n#!\t/usr/bin/python2.7\n#!/opt/ruby2/bin/ruby\n#!perl\n#!/bin/env  "
       "perl5",
       {"SHEBANG#!perl", "SHEBANG#!python", "SHEBANG#!ruby", "SHEBANG#!perl", "SHEBANG#!perl"}},
      {"#!/usr/bin/env FOO=1 B=2 ruby1.9\n#!/usr/bin/env -S deno run\n#!/usr/bin/env /opt/tclsh8.6",
       {"SHEBANG#!ruby", "SHEBANG#!-S", "SHEBANG#!tclsh"}},
      {"#!C:\\Perl\\bin\\perl.exe", {"SHEBANG#!C:\\Perl\\bin\\perl.exe"}},
      {"#!/usr/bin/env\nruby", {"ruby"}},
      {"# comment\nx = 1 // y", {"x", "//", "y"}},
      {"\n\n   # note\nx", {"x"}},
      {"#x\n//y", {"#x", "//y"}},
      {"echo $HOME # trailing", {"echo", "HOME", "#", "trailing"}},
      {"def f(x, **kw):\n  \"\"\"Doc \"s\".\"\"\"\n  return kw",
       {"def", "f", "(", "x", "**kw", ")", "return", "kw"}},
      {"-- | Doc\nmain = putStrLn \"hi\" {- b -} >> pure ()",
       {"main", "putStrLn", "pure", "(", ")"}},
      {"{- a {- b -} c", {"c"}},
      {"% comment\n\\section{Intro}", {"section", "{", "Intro", "}"}},
      {"<a href=1>hi</a>", {"<a>", "href=", "hi", "</a>"}},
      {"<!-- note -->\n<?xml version=\"1.0\"?>\n<br/>", {"<?xml>", "version=", "<br/>"}},
      {"a < b", {"a", "<", "b"}},
      {"if (a <b) x = c > d", {"if", "(", "a", "<b)>", "x", "c", "d"}},
      {"<a href=\"x\" title='y z' disabled><p class = \"x\"><a href=#top id=x>",
       {"<a>", "href=", "title=", "disabled", "<p>", "class", "x", "<a>", "href=", "id="}},
      // An empty quoted value swallows the next name.
      {"<input\tvalue='it\\'s'><a b=\"\" c=\"d\"><!DOCTYPE html>",
       {"<input>", "value=", "<a>", "b=", "d", "<!DOCTYPE>", "html"}},
      {"'abc", {"abc"}},
      {"s = \"a\\\\\" t \" u", {"s", "u"}},  // an escaped backslash reads as an escaped quote
      {"'a\\'b 'c' d", {"c", "d"}},
      {"/* open x", {"open", "x"}},
      {"1st 0x 1e-5 1e5 3.14f 10UL 0xFFul 7ULLL 0x1.8p 0X1F", {"st", "x", "e5", "L", "p", "X1F"}},
      {"a/b x.y /usr/bin/perl / *", {"a/b", "x.y", "/usr/bin/perl", "/", "*"}},
      {"caf\xC3\xA9x \xFF\xFE\x80 z", {"caf", "\xC3\xA9", "x", "\xFF\xFE\x80", "z"}},
      {std::string("a\0b\x01\x7F c", 8), {"a", "b", "c"}},
      {"<a href=1>", {"<a>", "href="}, {0, 1}},  // the token limit is checked between steps
      {"a b c", {"a"}, {0, 1}},
      {"abcdef", {"abcdef"}, {3, 0}},  // the byte limit bounds where tokens start
      {"   abc", {}, {3, 0}},
      {"/* long comment */ x", {}, {3, 0}},
      {test_support::repeat("word ", 3000), Tokens(500, "word"), {}},
      {std::string(50000, '\n') + "x", {"x"}},
      {test_support::repeat("{-", 2000) + " tail", {"tail"}},
      {"'" + test_support::repeat("\\'", 2000) + " tail", {"tail"}},
      {"#!/bin/" + std::string(200000, 'y'), {"SHEBANG#!" + std::string(200000, 'y')}},
  };
  for (const TokenRow& row : rows) {
    SCOPED_TRACE(row.text.substr(0, 60));
    EXPECT_EQ(Tokenizer(row.limits).extract_tokens(row.text), row.tokens);
    if (row.text.size() > 20000) continue;  // std::regex recurses per byte
    EXPECT_EQ(reference::extract_tokens(row.text, {row.limits.max_bytes, row.limits.max_tokens}),
              row.tokens);
    EXPECT_EQ(Tokenizer(row.limits).extract_shebang(row.text),
              reference::extract_shebang(row.text));
  }
}

// A host's locale must change no token: accented letters in UTF-8 and in Latin-1, digits,
// punctuation and a tag, tokenized under "C" and under "C.UTF-8".
std::vector<std::string> tokens_in_locale(const char* name) {
  const std::string previous = std::setlocale(LC_ALL, nullptr);
  const std::locale previous_global;
  if (std::setlocale(LC_ALL, name) == nullptr) return {"(locale missing)"};
  std::locale::global(std::locale(name));
  const std::vector<std::string> tokens =
      Tokenizer(Tokenizer::Opts{0, 0})
          .extract_tokens(
              "caf\xc3\xa9 na\xefve \xe9t\xe9 \xc2\xb5s 3.14 x_y <p class=a> // c\n\"s\" \xff end");
  std::locale::global(previous_global);
  std::setlocale(LC_ALL, previous.c_str());
  return tokens;
}

TEST(Tokenizer, TokensDoNotDependOnTheLocale) {
  const std::vector<std::string> in_c = tokens_in_locale("C");
  const std::vector<std::string> in_utf8 = tokens_in_locale("C.UTF-8");
  if (in_utf8 == std::vector<std::string>{"(locale missing)"}) GTEST_SKIP() << "no C.UTF-8";
  EXPECT_FALSE(in_c.empty());
  EXPECT_EQ(in_c, in_utf8);
}

}  // namespace
}  // namespace quillon::lingomat
