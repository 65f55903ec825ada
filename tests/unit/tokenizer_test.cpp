#include "tokenize/tokenizer.h"

#include <gtest/gtest.h>

namespace quillon::lingomat {
namespace {

using Tokens = std::vector<std::string>;

Tokens tokenize(const std::string& text, std::uint64_t max_bytes = 0,
                std::uint64_t max_tokens = 0) {
  return Tokenizer(Tokenizer::Opts{max_bytes, max_tokens}).extract_tokens(text);
}

TEST(TokenizerBasics, EmptyAndSeparatorOnlyTextsGiveNothing) {
  EXPECT_EQ(tokenize(""), Tokens{});
  EXPECT_EQ(tokenize(" = \n\t==  =\r\n"), Tokens{});
  EXPECT_EQ(tokenize(",:!>?$^~`\\"), Tokens{});
}

TEST(TokenizerLanguages, C) {
  EXPECT_EQ(tokenize("int a = 0x1F; /* c */ b++;"), (Tokens{"int", "a", ";", "b", "+", "+", ";"}));
  EXPECT_EQ(
      tokenize("#include <stdio.h>\nint main(void) {\n  printf(\"hi\\n\");\n  return 0;\n}\n"),
      (Tokens{"#include", "<stdio.h>", "int", "main", "(", "void", ")", "{", "printf", "(", ")",
              ";", "return", ";", "}"}));
  // "(*" opens a block comment even in C.
  EXPECT_EQ(tokenize("x = (*p); y; *) z"), (Tokens{"x", "z"}));
  EXPECT_EQ(tokenize("if (a && b || c) x <<= 1;"),
            (Tokens{"if", "(", "a", "&&", "b", "||", "c", ")", "x", "<<", ";"}));
}

TEST(TokenizerLanguages, PythonAndShellComments) {
  EXPECT_EQ(tokenize("#!/usr/bin/env python3\nprint(x)"),
            (Tokens{"SHEBANG#!python", "print", "(", "x", ")"}));
  EXPECT_EQ(tokenize("# comment\nx = 1 // y"), (Tokens{"x", "//", "y"}));
  EXPECT_EQ(tokenize("def f(x, **kw):\n    \"\"\"Doc \"string\".\"\"\"\n    return kw\n"),
            (Tokens{"def", "f", "(", "x", "**kw", ")", "return", "kw"}));
  // "(*" opens a block comment; unterminated, only the marker is lost.
  EXPECT_EQ(tokenize("f(**kw)"), (Tokens{"f", "*kw", ")"}));
  EXPECT_EQ(tokenize("@property\ndef x(self): pass"),
            (Tokens{"@property", "def", "x", "(", "self", ")", "pass"}));
  // Comment markers count only at line start and before a space; blank lines may precede them.
  EXPECT_EQ(tokenize("\n\n   # note\nx"), (Tokens{"x"}));
  EXPECT_EQ(tokenize("#x\n//y"), (Tokens{"#x", "//y"}));
  EXPECT_EQ(tokenize("echo $HOME # trailing"), (Tokens{"echo", "HOME", "#", "trailing"}));
}

TEST(TokenizerLanguages, ShebangOnAnyLine) {
  EXPECT_EQ(tokenize("x\n#!/bin/sh\ny"), (Tokens{"x", "SHEBANG#!sh", "y"}));
  EXPECT_EQ(tokenize("#!   \nx"), (Tokens{"x"}));
  EXPECT_EQ(tokenize("#!\nx"), (Tokens{"#", "x"}));
  EXPECT_EQ(tokenize("#!/usr/bin/3to2\nx"), (Tokens{"x"}));
}

TEST(TokenizerLanguages, HaskellSqlAndLua) {
  EXPECT_EQ(tokenize("-- | Doc\nmain = putStrLn \"hi\" {- block -} >> pure ()"),
            (Tokens{"main", "putStrLn", "pure", "(", ")"}));
  EXPECT_EQ(tokenize("x = {-1}"), (Tokens{"x", "}"}));  // "{-" opens a comment
  EXPECT_EQ(tokenize("SELECT a, b FROM t WHERE c = 'it''s';\n-- done\n"),
            (Tokens{"SELECT", "a", "b", "FROM", "t", "WHERE", "c", ";"}));
  EXPECT_EQ(tokenize("local s = [[x]] % 2"), (Tokens{"local", "s", "[", "[", "x", "]", "]", "%"}));
}

TEST(TokenizerLanguages, LispAndTeX) {
  EXPECT_EQ(tokenize("(defun sq (x) (* x x))"),
            (Tokens{"(", "defun", "sq", "(", "x", ")", "x", "x", ")", ")"}));
  EXPECT_EQ(tokenize("% comment\n\\section{Intro}"), (Tokens{"section", "{", "Intro", "}"}));
}

TEST(TokenizerLanguages, MarkupTags) {
  EXPECT_EQ(tokenize("<a href=1>hi</a>"), (Tokens{"<a>", "href=", "hi", "</a>"}));
  EXPECT_EQ(tokenize("<!-- note -->\n<?xml version=\"1.0\"?>\n<br/>"),
            (Tokens{"<?xml>", "version=", "<br/>"}));
  EXPECT_EQ(tokenize("a < b"), (Tokens{"a", "<", "b"}));
  // A tag may run across lines up to the next ">".
  EXPECT_EQ(tokenize("if (a <b) x = c > d"), (Tokens{"if", "(", "a", "<b)>", "x", "c", "d"}));
}

TEST(TokenizerRules, StringLiterals) {
  EXPECT_EQ(tokenize("x = 'it\\'s'"), (Tokens{"x"}));
  EXPECT_EQ(tokenize("'abc"), (Tokens{"abc"}));
  EXPECT_EQ(tokenize("a = \"\" b"), (Tokens{"a", "b"}));
  // An escaped backslash before the quote is read as an escaped quote.
  EXPECT_EQ(tokenize("s = \"a\\\\\" t \" u"), (Tokens{"s", "u"}));
}

TEST(TokenizerRules, UnterminatedBlockCommentKeepsItsContent) {
  EXPECT_EQ(tokenize("/* open x"), (Tokens{"open", "x"}));
  EXPECT_EQ(tokenize("'''a'''b"), (Tokens{"b"}));
}

TEST(TokenizerRules, NumbersComeBeforeWords) {
  EXPECT_EQ(tokenize("1st"), (Tokens{"st"}));
  EXPECT_EQ(tokenize("0x"), (Tokens{"x"}));
  EXPECT_EQ(tokenize("1e-5"), Tokens{});
  EXPECT_EQ(tokenize("1e5"), (Tokens{"e5"}));
  EXPECT_EQ(tokenize("3.14f 10UL 0xFFul"), Tokens{});
}

TEST(TokenizerRules, WordClassJoinsPunctuation) {
  EXPECT_EQ(tokenize("a/b x.y /usr/bin/perl / *"),
            (Tokens{"a/b", "x.y", "/usr/bin/perl", "/", "*"}));
  EXPECT_EQ(tokenize("a - b + c % d & e | f"),
            (Tokens{"a", "-", "b", "+", "c", "%", "d", "&", "e", "|", "f"}));
}

TEST(TokenizerRules, HighBytesFormTheirOwnToken) {
  EXPECT_EQ(tokenize("caf\xC3\xA9x"), (Tokens{"caf", "\xC3\xA9", "x"}));
  EXPECT_EQ(tokenize("\xFF\xFE\x80 z"), (Tokens{"\xFF\xFE\x80", "z"}));
}

TEST(TokenizerRules, NulAndControlBytesAreSkipped) {
  EXPECT_EQ(tokenize(std::string("a\0b\x01\x7F c", 8)), (Tokens{"a", "b", "c"}));
}

TEST(TokenizerLimits, TokenLimitIsCheckedBetweenSteps) {
  EXPECT_EQ(tokenize("<a href=1>", 0, 1), (Tokens{"<a>", "href="}));
  EXPECT_EQ(tokenize("a b c", 0, 1), (Tokens{"a"}));
}

TEST(TokenizerLimits, ByteLimitBoundsWhereTokensStart) {
  EXPECT_EQ(tokenize("abcdef", 3, 0), (Tokens{"abcdef"}));
  EXPECT_EQ(tokenize("   abc", 3, 0), Tokens{});
  EXPECT_EQ(tokenize("/* long comment */ x", 3, 0), Tokens{});
}

TEST(TokenizerLimits, ZeroMeansUnlimited) {
  std::string text;
  for (int i = 0; i < 3000; ++i) text += "word ";
  EXPECT_EQ(tokenize(text, 0, 0).size(), 3000u);
  EXPECT_EQ(Tokenizer(Tokenizer::Opts{}).extract_tokens(text).size(), 500u);
}

TEST(TokenizerRobustness, LongSingleLineInputsDoNotCrash) {
  // Minified code and huge one-line files must tokenize without exhausting the stack.
  const std::string tag_run = "<a" + std::string(200000, 'x');
  EXPECT_FALSE(tokenize(tag_run).empty());
  const std::string shebang = "#!/bin/" + std::string(200000, 'y');
  EXPECT_EQ(tokenize(shebang).size(), 1u);
  const std::string quote = "'" + std::string(200000, ' ');
  EXPECT_TRUE(tokenize(quote).empty());
}

}  // namespace
}  // namespace quillon::lingomat

namespace quillon::lingomat {
namespace {

// Inputs that made earlier versions rescan the rest of the text at every byte. The answers
// must stay those of the rules; the benchmark tracks their cost.
TEST(TokenizerRobustness, RepeatedFailuresGiveTheSameTokens) {
  // White space at every line start: the line-comment rule fails at each line.
  EXPECT_EQ(tokenize(std::string(50000, '\n') + "x"), Tokens{"x"});
  EXPECT_EQ(tokenize("\n \n  \n#x\n \t# c\ny"), (Tokens{"#x", "y"}));
  // Unterminated block comments: each start marker is dropped and scanning goes on.
  std::string openers;
  for (int i = 0; i < 2000; ++i) openers += "{-";
  EXPECT_EQ(tokenize(openers + " tail"), Tokens{"tail"});
  EXPECT_EQ(tokenize("{- a {- b -} c"), (Tokens{"c"}));
  // A chain of escaped quotes never closes a literal, from whichever quote it starts.
  std::string escaped = "'";
  for (int i = 0; i < 2000; ++i) escaped += "\\'";
  EXPECT_EQ(tokenize(escaped + " tail"), Tokens{"tail"});
  EXPECT_EQ(tokenize("'a\\'b 'c' d"), (Tokens{"c", "d"}));
  EXPECT_EQ(tokenize("x '\\' y \"z"), (Tokens{"x", "y", "z"}));
}

}  // namespace
}  // namespace quillon::lingomat

#include "sample_texts.h"

namespace quillon::lingomat {
namespace {

// A caller may tokenize a prefix of a text in its place when the tokenizer reports that it
// never looked past that prefix: the tokens must then be those of the whole text.
TEST(TokenizerReach, APrefixThatHoldsTheReachGivesTheWholeTextsTokens) {
  std::size_t prefixes_enough = 0;
  for (const auto& [max_bytes, max_tokens] :
       std::vector<std::pair<std::uint64_t, std::uint64_t>>{{0, 0}, {16, 0}, {40, 5}, {7, 0}}) {
    const Tokenizer tokenizer(Tokenizer::Opts{max_bytes, max_tokens});
    for (const std::string& text : test_support::random_texts(400, 120, 23)) {
      const Tokens whole = tokenizer.extract_tokens(text);
      for (std::size_t cut = 0; cut <= text.size(); cut += 3) {
        TokenList prefix_tokens;
        const std::size_t reach = tokenizer.extract_tokens_and_reach(
            std::string_view(text).substr(0, cut), prefix_tokens);
        if (reach > cut) continue;
        ++prefixes_enough;
        ASSERT_EQ(prefix_tokens.tokens, whole)
            << "text of " << text.size() << " bytes cut at " << cut << ", limits " << max_bytes
            << "/" << max_tokens;
      }
    }
  }
  EXPECT_GT(prefixes_enough, 1000u);  // the property was actually exercised
}

}  // namespace
}  // namespace quillon::lingomat
