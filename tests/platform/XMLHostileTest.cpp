// Documents that are broken, or meant to break their reader.

#include <qx/platform/Utf8.h>
#include <qx/platform/XML.h>

#include <gtest/gtest.h>

namespace qx {
namespace {

std::string MessageOf(std::string_view Text, const TXMLLimits& Limits = {}) {
  try {
    TXMLDocument::Parse(Text, Limits);
  } catch (const EXMLError& Error) {
    return Error.what();
  }
  return "accepted";
}

std::string Repeated(std::string_view Text, int Times) {
  std::string All;
  for (int I = 0; I < Times; ++I) {
    All += Text;
  }
  return All;
}

std::string Utf16(std::string_view Text, bool HighFirst, bool Mark) {
  std::string Bytes;
  const auto Append = [&](char32_t Unit) {
    const char High = static_cast<char>(Unit >> 8);
    const char Low = static_cast<char>(Unit & 0xff);
    Bytes += HighFirst ? High : Low;
    Bytes += HighFirst ? Low : High;
  };
  if (Mark) {
    Append(0xfeff);
  }
  for (std::size_t Offset = 0; Offset < Text.size();) {
    const char32_t CodePoint = NextCodePoint(Text, Offset).value();
    if (CodePoint > 0xffff) {
      Append(0xd800 + ((CodePoint - 0x10000) >> 10));
      Append(0xdc00 + ((CodePoint - 0x10000) & 0x3ff));
    } else {
      Append(CodePoint);
    }
  }
  return Bytes;
}

TEST(HostileXML, WhatIsNotWellFormedIsRefused) {
  for (const std::string_view Text : {"<",
                                      "<a",
                                      "<a>",
                                      "<a></b>",
                                      "</a>",
                                      "<a><b></a></b>",
                                      "<a b></a>",
                                      "<a b=c/>",
                                      "<a b='c/>",
                                      "< a/>",
                                      "<1/>",
                                      "<a/",
                                      "<a><!-- </a>",
                                      "<a><![CDATA[ </a>",
                                      "garbage",
                                      "\x7f"
                                      "ELF\x02\x01",
                                      "<a>&</a>",
                                      "<a>&unknown;</a>",
                                      "<a>&#;</a>",
                                      "<a>&#x;</a>",
                                      "<a>&#xZZ;</a>",
                                      "<a>&amp</a>"}) {
    EXPECT_NE(MessageOf(Text), "accepted") << Text;
  }
}

TEST(HostileXML, MarkupCannotBeHiddenInAttributes) {
  for (const std::string_view Text :
       {"<a b=\"<!--\"/><!DOCTYPE x [<!ENTITY a \"b\">]>", "<a b='<!--'><c>&foo;</c></a>",
        "<a b='<?'><c>&#0;</c></a>", "<a b='<b>'/>", "<a b='&unknown;'/>", "<a b='\"'>&#0;</a>",
        "<a b=\"'\">&#0;</a>"}) {
    EXPECT_NE(MessageOf(Text), "accepted") << Text;
  }
  EXPECT_EQ(TXMLDocument::Parse("<a b='>\"&lt;'>c</a>").Root().Attribute("b"), ">\"<");
}

TEST(HostileXML, DeclarationsStandAtTheBeginningAndNameAVersion) {
  for (const std::string_view Text : {"\n<?xml version='1.0'?><a/>",
                                      "<?xml version='1.0'?><?xml version='1.0'?><a/>",
                                      "<a><?xml version='1.0'?></a>",
                                      "<?xml?><a/>",
                                      "<?xml encoding='UTF-8'?><a/>",
                                      "<a/><?XML ?>",
                                      "<?XML version='1.0'?><a/>",
                                      "<?xml version?><a/>",
                                      "<?xml version=1.0?><a/>",
                                      "<?xml version='2.0'?><a/>",
                                      "<?xml version='1.0' version='1.0'?><a/>",
                                      "<?xml version='1.0' foo='bar'?><a/>",
                                      "<?xml version='1.0' standalone='maybe'?><a/>",
                                      "<?xml version='1.0' standalone='yes' encoding='UTF-8'?><a/>",
                                      "<?xml version='1.0'encoding='UTF-8'?><a/>",
                                      "<?xml version='1.0' encoding=''?><a/>",
                                      "<?xml version='1.0\"?><a/>",
                                      "<?a+b?><a/>",
                                      "<?xml",
                                      "<?xml version='1.0'"}) {
    EXPECT_NE(MessageOf(Text), "accepted") << Text;
  }
  for (const std::string_view Text :
       {"<?xml-stylesheet href='a'?><a/>", "<?xml version='1.0' encoding='UTF-8' standalone=\"yes\" ?><a/>",
        "<?xml\n version = \"1.1\"\tstandalone='no'?>\r\n<a/>", "<a><?b?></a>"}) {
    EXPECT_EQ(MessageOf(Text), "accepted") << Text;
  }
}

TEST(HostileXML, TextKeepsToItsRules) {
  for (const std::string_view Text :
       {"<a>]]></a>", "<a><!-- -- --></a>", "<a/>&#32;", "<a/><![CDATA[ ]]>", "&#32;<a/>",
        "\xef\xbb\xbf\xef\xbb\xbf<a/>", "<a\xc3\x97/>", "<a \xc3\x97='1'/>",
        "<?xml version='1.0' encoding='US-ASCII'?><a>\xc3\xa9</a>"}) {
    EXPECT_NE(MessageOf(Text), "accepted") << Text;
  }
  EXPECT_EQ(MessageOf("<n:a xmlns:n='u'><n:b/></n:a>"), "accepted");
  EXPECT_EQ(MessageOf("<?xml version='1.0' encoding='US-ASCII'?><a>e</a>"), "accepted");
}

TEST(HostileXML, AnErrorTellsItsPlace) {
  EXPECT_EQ(MessageOf("<a>\n  <b>\n</a>").substr(0, 6), "Line 3");
  EXPECT_EQ(MessageOf("<a>\n text &bad;</a>"),
            "Line 2, column 7: a reference to an entity or a character that is not known");
}

TEST(HostileXML, AnEmptyDocumentIsRefused) {
  for (const std::string_view Text : {"", " \n", "\xef\xbb\xbf"}) {
    EXPECT_EQ(MessageOf(Text), "The document is empty");
  }
  EXPECT_EQ(MessageOf("<?xml version='1.0'?>"), "Line 1, column 1: the document has no root element");
  EXPECT_EQ(MessageOf("<!-- only -->"), "Line 1, column 1: the document has no root element");
}

TEST(HostileXML, OnlyOneRootAndNothingBesideIt) {
  EXPECT_EQ(MessageOf("<a/>\n<b/>"), "Line 2, column 2: a second root element");
  EXPECT_EQ(MessageOf("<a/>text"), "Line 1, column 5: text outside the root element");
  EXPECT_EQ(MessageOf("text<a/>"), "Line 1, column 1: text outside the root element");
  EXPECT_EQ(MessageOf("<a/><![CDATA[text]]>").substr(8), "column 5: text outside the root element");
  EXPECT_EQ(MessageOf("<?xml version='1.0'?>\n<!-- a -->\n<a/>\n<!-- b --> \n"), "accepted");
}

TEST(HostileXML, ControlCharactersAreRefusedHoweverTheyAreWritten) {
  EXPECT_NE(MessageOf(std::string_view("<a/>\0<b/>", 9)), "accepted");
  EXPECT_NE(MessageOf(std::string_view("<a>\0</a>", 8)), "accepted");
  EXPECT_NE(MessageOf("<a>\x01</a>"), "accepted");
  EXPECT_NE(MessageOf("<a>&#0;</a>"), "accepted");
  EXPECT_NE(MessageOf("<a>&#x1F;</a>"), "accepted");
  EXPECT_NE(MessageOf("<a>&#xD800;</a>"), "accepted");
  EXPECT_NE(MessageOf("<a>&#x110000;</a>"), "accepted");
  EXPECT_NE(MessageOf("<a>&#99999999999;</a>"), "accepted");
  EXPECT_NE(MessageOf("<a>\xef\xbf\xbe</a>"), "accepted");
  EXPECT_EQ(
      TXMLDocument::Parse("<a>&#x0000000000000000000041;&#00000000000000000000066;</a>").Root().AsText(),
      "AB");
  EXPECT_EQ(TXMLDocument::Parse("<a>&#x20AC;&#13;&#9;</a>").Root().AsText(), "\xe2\x82\xac\r\t");
}

TEST(HostileXML, EntitiesAreNotDefined) {
  EXPECT_EQ(MessageOf("<!DOCTYPE a [<!ENTITY x \"y\">]><a>&x;</a>"),
            "Line 1, column 1: document type declarations and entities are not accepted");
  EXPECT_NE(MessageOf("<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a/>"), "accepted");
}

TEST(HostileXML, AnAttributeStandsOnce) {
  EXPECT_EQ(MessageOf("<a>\n<b c='1' d='2' c='3'/></a>"),
            "Line 2, column 2: the attribute \"c\" stands there twice");
}

TEST(HostileXML, EncodingsAreReadOrRefused) {
  const std::string Text = "<?xml version='1.0' encoding='UTF-16'?><a>\xc3\xa9\xf0\x9f\x8c\xb1</a>";
  for (const bool HighFirst : {false, true}) {
    EXPECT_EQ(TXMLDocument::Parse(Utf16(Text, HighFirst, true)).Root().AsText(), "\xc3\xa9\xf0\x9f\x8c\xb1");
    EXPECT_NE(MessageOf(Utf16(Text, HighFirst, false)), "accepted");
    EXPECT_NE(MessageOf(Utf16("<?xml version='1.0' encoding='UTF-16zz'?><a/>", HighFirst, true)), "accepted");
    EXPECT_NE(MessageOf(Utf16("<a/>", HighFirst, true) + "x"), "accepted");
  }
  EXPECT_NE(MessageOf(std::string_view("\xff\xfe<\0a\0>\0\x00\xd8<\0/\0a\0>\0", 18)),
            "accepted"); // half a pair
  EXPECT_NE(MessageOf(Utf16("<?xml version='1.0' encoding='ISO-8859-1'?><a/>", false, true)), "accepted");
  EXPECT_NE(MessageOf(Text), "accepted"); // it says UTF-16, but is not
  EXPECT_NE(MessageOf("<?xml version='1.0' encoding='EBCDIC'?><a/>"), "accepted");
  EXPECT_NE(MessageOf("<a>\xff</a>"), "accepted");
  EXPECT_NE(MessageOf("<a b='\xc0\x80'/>"), "accepted");
  EXPECT_EQ(TXMLDocument::Parse("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>").Root().AsText(),
            "\xc3\xa9");
  EXPECT_EQ(TXMLDocument::Parse("\xef\xbb\xbf<a>\xc3\xa9</a>").Root().AsText(), "\xc3\xa9");
  EXPECT_EQ(TXMLDocument::Parse("<?xml version=\"1.0\" encoding=\"utf-8\"?><a/>").Root().Tag(), "a");
}

TEST(HostileXML, AMillionLevelsAreRefusedUnlessTheLimitIsRaised) {
  const int Levels = 1'000'000;
  const std::string Text = Repeated("<a>", Levels) + Repeated("</a>", Levels);
  EXPECT_EQ(MessageOf(Text), "Line 1, column 3073: elements nested deeper than 1024 levels");
  TXMLLimits Limits;
  Limits.Depth = Levels;
  const TXMLDocument Document = TXMLDocument::Parse(Text, Limits);
  EXPECT_GT(Document.Text().size(), Text.size());
  EXPECT_EQ(MessageOf(Repeated("<a>", Levels)).substr(0, 4), "Line"); // none of them closed
}

TEST(HostileXML, EveryLimitHolds) {
  TXMLLimits Limits;
  Limits.Bytes = 10;
  EXPECT_EQ(MessageOf("<abc></abc>", Limits), "The document is longer than 10 bytes");
  EXPECT_EQ(MessageOf("<ab></ab>", Limits), "accepted");
  Limits = {};
  Limits.Depth = 2;
  EXPECT_EQ(MessageOf("<a><b/><b/></a>", Limits), "accepted");
  EXPECT_NE(MessageOf("<a><b><c/></b></a>", Limits), "accepted");
  Limits = {};
  Limits.Elements = 3;
  EXPECT_EQ(MessageOf("<a><b/><b/></a>", Limits), "accepted");
  EXPECT_EQ(MessageOf("<a><b/><b/><b/></a>", Limits),
            "Line 1, column 12: more than 3 elements and attributes");
  EXPECT_EQ(MessageOf("<a><b c='1' d='1'/></a>", Limits),
            "Line 1, column 4: more than 3 elements and attributes");
  Limits = {};
  Limits.Attribute = 4;
  EXPECT_EQ(MessageOf("<a b='1234'/>", Limits), "accepted");
  EXPECT_EQ(MessageOf("<a b='12345'/>", Limits), "Line 1, column 6: an attribute is longer than 4 bytes");
}

TEST(HostileXML, TheStandardLimitsAreSafe) {
  const TXMLLimits Limits;
  EXPECT_EQ(Limits.Bytes, 256U << 20);
  EXPECT_EQ(Limits.Depth, 1024U);
  EXPECT_EQ(Limits.Elements, 50'000'000U);
  EXPECT_EQ(Limits.Attribute, 1U << 20);
  EXPECT_NE(MessageOf("<a b='" + std::string((1 << 20) + 1, 'x') + "'/>"), "accepted");
}

TEST(HostileXML, ManyElementsTakeNoQuadraticTime) {
  EXPECT_EQ(MessageOf("<a>" + Repeated("<b c='d'>text</b>\n", 1'000'000) + "</a>"), "accepted");
  EXPECT_EQ(MessageOf("<a>" + Repeated("<!--x--><b>&lt;</b><![CDATA[x]]>", 300'000) + "</a>"), "accepted");
}

TEST(HostileXML, ManyAttributesTakeNoQuadraticTime) {
  std::string Text = "<a";
  for (int I = 0; I < 200'000; ++I) {
    Text += " b" + std::to_string(I) + "=''";
  }
  EXPECT_EQ(MessageOf(Text + "/>"), "accepted");
  EXPECT_NE(MessageOf(Text + " b7=''/>"), "accepted");
}

} // namespace
} // namespace qx
