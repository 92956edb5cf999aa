#include "support/Locales.h"
#include "support/TemporaryFolder.h"
#include <qx/platform/XML.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <system_error>

namespace qx {
namespace {

TEST(XML, ANewDocumentIsUtf8WithTwoBlanksALevelAndLineFeeds) {
  const TXMLDocument Document = TXMLDocument::New("Run");
  const TXMLNode Root = Document.Root();
  Root.SetAttribute("Size", 3);
  Root.AddChild("Name").SetText("one");
  Root.AddChild("List").AddChild("Item").SetInteger(-1);
  Root.AddChild("Empty");
  EXPECT_EQ(Document.Text(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<Run Size=\"3\">\n"
                             "  <Name>one</Name>\n"
                             "  <List>\n"
                             "    <Item>-1</Item>\n"
                             "  </List>\n"
                             "  <Empty/>\n"
                             "</Run>\n");
}

TEST(XML, IndentationEndsAtABoundedDepth) {
  const TXMLDocument Document = TXMLDocument::New("A");
  TXMLNode Node = Document.Root();
  for (int I = 0; I < 500; ++I) {
    Node = Node.AddChild("A");
  }
  EXPECT_LT(Document.Text().size(), 500U * (2 * (1 + 64) + 8));
  EXPECT_NE(Document.Text().find('\n' + std::string(64, ' ') + "<A>"), std::string::npos);
  EXPECT_EQ(TXMLDocument::Parse(Document.Text()).Text(), Document.Text());
}

TEST(XML, TextAndAttributesComeBackAsTheyWere) {
  const TXMLDocument Document = TXMLDocument::New("Run");
  for (const char* const Text : {"a<b>&\"'c]]>", " blanks ", "   ", "\t\n", "line\r\nfeed\rreturn",
                                 "\xc3\xa9\xe2\x82\xac\xf0\x9f\x8c\xb1", "&amp;", "<!-- -->", "&#0;"}) {
    Document.Root().SetText(Text);
    Document.Root().SetAttribute("Note", Text);
    const TXMLNode Read = TXMLDocument::Parse(Document.Text()).Root();
    EXPECT_EQ(Read.AsText(), Text);
    EXPECT_EQ(Read.Attribute("Note"), Text);
  }
}

TEST(XML, WhatNoDocumentCanHoldIsRefusedAndChangesNothing) {
  const TXMLNode Root = TXMLDocument::New("Run").Root();
  Root.SetText("former");
  for (const std::string& Text :
       {std::string("\x01"), std::string("a\0b", 3), std::string("\xff"), std::string("\xef\xbf\xbf"),
        std::string("\xed\xa0\x80"), std::string("\x1b[0m")}) {
    EXPECT_THROW(Root.SetText(Text), std::invalid_argument);
    EXPECT_THROW(Root.SetAttribute("Note", Text), std::invalid_argument);
  }
  EXPECT_EQ(Root.AsText(), "former");
  EXPECT_FALSE(Root.HasAttribute("Note"));
  for (const char* const Tag : {"", "1st", "a b", "a:b", "<", "a>", "-a", "\xff"}) {
    EXPECT_THROW(Root.AddChild(Tag), std::invalid_argument) << Tag;
    EXPECT_THROW(TXMLDocument::New(Tag), std::invalid_argument) << Tag;
  }
}

TEST(XML, AnyTextMakesATag) {
  EXPECT_EQ(XMLTag("TQXGAIndividual"), "TQXGAIndividual");
  EXPECT_EQ(XMLTag("TNode<double, 2>"), "TNode_double__2_");
  EXPECT_EQ(XMLTag("1st"), "_st");
  EXPECT_EQ(XMLTag("a:b"), "a_b");
  EXPECT_EQ(XMLTag("\xc3\xa9t\xc3\xa9"), "\xc3\xa9t\xc3\xa9");
  EXPECT_EQ(XMLTag("a\xff"
                   "b"),
            "a_b");
  EXPECT_EQ(XMLTag(""), "_");
}

TEST(XML, MissingTextReadsAsNothing) {
  for (const TXMLNode& Node :
       {TXMLNode(), TXMLDocument::New("Run").Root(), TXMLDocument::Parse("<a> \n </a>").Root()}) {
    EXPECT_EQ(Node.AsReal(), 0);
    EXPECT_EQ(Node.AsInteger(), 0);
    EXPECT_FALSE(Node.AsBoolean());
  }
  EXPECT_EQ(TXMLNode().AsText(), "");
  EXPECT_EQ(TXMLNode().Tag(), "");
  EXPECT_EQ(TXMLNode().Attribute("a"), "");
  EXPECT_FALSE(TXMLNode().FindChild("a"));
  EXPECT_FALSE(TXMLNode());
}

TEST(XML, ABooleanIsTrueForThatWordInAnyCaseOnly) {
  const auto Read = [](const std::string& Text) {
    return TXMLDocument::Parse("<a>" + Text + "</a>").Root().AsBoolean();
  };
  EXPECT_TRUE(Read("true"));
  EXPECT_TRUE(Read("TRUE"));
  EXPECT_TRUE(Read("True"));
  EXPECT_FALSE(Read("1"));
  EXPECT_FALSE(Read("yes"));
  EXPECT_FALSE(Read(" true"));
}

TEST(XML, AValueOfTheWrongKindIsNamedWithItsPlace) {
  const TXMLNode Root = TXMLDocument::Parse("<Run>\n  <Size>12x</Size>\n</Run>").Root();
  try {
    Root.FindChild("Size").AsInteger();
    FAIL();
  } catch (const EXMLError& Error) {
    EXPECT_EQ(Error.Line(), 2);
    EXPECT_EQ(Error.Column(), 4);
    EXPECT_STREQ(Error.what(), "Line 2, column 4: \"Size\": holds \"12x\", which is no whole number");
  }
  EXPECT_THROW(Root.FindChild("Size").AsReal(), EXMLError);
  EXPECT_THROW(TXMLDocument::Parse("<a>2147483648</a>").Root().AsInteger(), EXMLError);
  EXPECT_EQ(TXMLDocument::Parse("<a>-2147483648</a>").Root().AsInteger(), std::numeric_limits<int>::min());
  EXPECT_THROW(TXMLDocument::Parse("<a n='x'/>").Root().AttributeAsInteger("n"), EXMLError);
  EXPECT_THROW(TXMLDocument::Parse("<a>NaN</a>").Root().AsNumber(), EXMLError);
  EXPECT_TRUE(std::isnan(TXMLDocument::Parse("<a>NaN</a>").Root().AsReal()));
}

TEST(XML, TextIsReadWholeAcrossCommentsAndSections) {
  EXPECT_EQ(TXMLDocument::Parse("<a>tr<!-- half --><![CDATA[ue & <b>]]></a>").Root().AsText(), "true & <b>");
}

TEST(XML, NumbersAreWrittenAndReadUnderEveryLocale) {
  const tests::TGermanLocale German;
  const TXMLDocument Document = TXMLDocument::New("Run");
  Document.Root().AddChild("Single").SetSingle(1234.5);
  Document.Root().AddChild("Real").SetReal(0.1);
  Document.Root().AddChild("Whole").SetInteger(1234567);
  EXPECT_NE(Document.Text().find("<Single>1234.5</Single>\n  <Real>0.1</Real>\n  <Whole>1234567</Whole>"),
            std::string::npos);
  std::stringstream Stream;
  Document.Write(Stream);
  const TXMLNode Root = TXMLDocument::Read(Stream).Root();
  EXPECT_EQ(Root.FindChild("Single").AsReal(), 1234.5);
  EXPECT_EQ(Root.FindChild("Real").AsReal(), 0.1);
  EXPECT_EQ(Root.FindChild("Whole").AsInteger(), 1234567);
}

TEST(XML, AChildIsFoundOrMade) {
  const TXMLNode Root = TXMLDocument::New("Run").Root();
  EXPECT_FALSE(Root.HasChild("Name"));
  const TXMLNode Made = Root.Child("Name");
  EXPECT_EQ(Root.Child("Name"), Made);
  EXPECT_EQ(Root.FindChild("Name"), Made);
  EXPECT_EQ(Root.FirstChild(), Made);
  EXPECT_FALSE(Made.NextSibling());
  Root.Clear();
  EXPECT_FALSE(Root.FirstChild());
}

TEST(XML, AnElementOfAnyDepthIsCleared) {
  const TXMLDocument Document = TXMLDocument::New("A");
  TXMLNode Node = Document.Root();
  for (int I = 0; I < 400'000; ++I) {
    Node = Node.AddChild("A");
  }
  Document.Root().Clear();
  EXPECT_EQ(Document.Root().ChildCount(), 0);
  EXPECT_EQ(Document.Text(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<A/>\n");
}

TEST(XML, AnElementKeepsItsDocumentAlive) {
  TXMLNode Node;
  {
    const TXMLDocument Document = TXMLDocument::Parse("<a><b>text</b></a>");
    Node = Document.Root().FindChild("b");
  }
  EXPECT_EQ(Node.AsText(), "text");
  EXPECT_EQ(Node.Document().Root().Tag(), "a");
}

TEST(XML, ListsShowTheElementsOfOneTag) {
  const TXMLNode Root = TXMLDocument::Parse("<a><n>1</n><t>x</t><n>2</n></a>").Root();
  IXMLIntegerList Numbers(Root, "n");
  ASSERT_EQ(Numbers.Count(), 2);
  EXPECT_EQ(Numbers[1], 2);
  Numbers.SetItems(0, 7);
  Numbers.Add(3);
  EXPECT_EQ(Numbers[0] + Numbers[1] + Numbers[2], 12);
  EXPECT_THROW(Numbers.Items(3), std::out_of_range);
  TXMLNodeList<TXMLNode> Texts(Root, "t");
  Texts.Add().SetText("y");
  EXPECT_EQ(IXMLString_List(Root, "t").Count(), 2);
  EXPECT_EQ(IXMLString_List(Root, "t")[1], "y");
}

TEST(XML, TheRootIsAskedForByName) {
  const TXMLDocument Document = TXMLDocument::Parse("<Other/>");
  EXPECT_EQ(Document.Root("Other").Tag(), "Other");
  try {
    Document.Root("GADomain");
    FAIL();
  } catch (const EXMLError& Error) {
    EXPECT_STREQ(Error.what(), "Line 1, column 2: \"Other\": the root element is not \"GADomain\"");
  }
}

TEST(XML, AFileIsWrittenAndRead) {
  const tests::TTemporaryFolder Folder;
  const std::string Name = Folder.File("run.xml");
  const TXMLDocument Document = TXMLDocument::New("Run");
  Document.Root().SetText("a<&>\"'\xc3\xa9");
  Document.WriteFile(Name);
  EXPECT_EQ(tests::ReadFile(Name), Document.Text());
  EXPECT_TRUE(tests::XmllintAccepts(Name));
  EXPECT_EQ(TXMLDocument::ReadFile(Name).Root().AsText(), "a<&>\"'\xc3\xa9");
}

TEST(XML, AFileThatCannotBeReadIsNamed) {
  const tests::TTemporaryFolder Folder;
  for (const std::string& Name : {Folder.File("missing.xml"), Folder.File("")}) {
    try {
      TXMLDocument::ReadFile(Name);
      FAIL();
    } catch (const std::system_error& Error) {
      EXPECT_NE(std::string(Error.what()).find(Name), std::string::npos) << Error.what();
    }
  }
}

TEST(XML, AStreamThatFailsIsAnError) {
  const TXMLDocument Document = TXMLDocument::New("Run");
  std::ostringstream Out;
  Out.setstate(std::ios::badbit);
  EXPECT_THROW(Document.Write(Out), std::ios_base::failure);
  std::istringstream In("<a/>");
  In.setstate(std::ios::failbit);
  EXPECT_THROW(TXMLDocument::Read(In), std::ios_base::failure);
  std::istringstream Strict("<a/>");
  Strict.exceptions(std::ios::failbit | std::ios::badbit);
  EXPECT_EQ(TXMLDocument::Read(Strict).Root().Tag(), "a"); // the end is no failure
}

} // namespace
} // namespace qx
