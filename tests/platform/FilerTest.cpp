#include "support/Locales.h"
#include <qx/platform/Collection.h>
#include <qx/platform/Component.h>
#include <qx/platform/Filer.h>
#include <qx/platform/XML.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

namespace qx {
namespace {

class TPart : public TCollectionItem {
public:
  std::string Name;
  std::vector<std::string> Tags;

protected:
  void DefineProperties(TFiler& Filer) override {
    TCollectionItem::DefineProperties(Filer);
    Filer.Property("Name", Name, !Name.empty(), [this](const std::string& Value) { Name = Value; });
    Filer.Property("Tags", Tags, !Tags.empty(),
                   [this](const std::vector<std::string>& Value) { Tags = Value; });
  }
};

class TMachine : public TComponent {
public:
  int Speed = 1;
  bool Running = false;
  double Load = 0.5;
  TTypedCollection<TPart, TOwnedCollection> Parts{this, ItemClassOf<TPart>()};
  std::vector<std::string> Asked; // names of the items that were to come

protected:
  void DefineProperties(TFiler& Filer) override {
    TComponent::DefineProperties(Filer);
    Filer.Property("Speed", Speed, Speed != 1, [this](int Value) {
      if (Value < 0) {
        throw std::out_of_range("Speed must not be negative");
      }
      Speed = Value;
    });
    Filer.Property("Running", Running, Running, [this](bool Value) { Running = Value; });
    Filer.Property("Load", Load, Load != 0.5, [this](double Value) { Load = Value; });
    Filer.Items(
        "Parts", Parts, [this](int) { Parts.Clear(); },
        [this](std::string_view Name) -> TCollectionItem& {
          Asked.emplace_back(Name);
          return Parts.Add();
        });
  }
};

std::string Written(TComponent& Component) {
  std::ostringstream Stream;
  WriteComponent(Stream, Component);
  return Stream.str();
}

void Read(TComponent& Component, const std::string& Text) {
  std::istringstream Stream(Text);
  ReadComponent(Stream, Component);
}

TEST(ComponentStream, HoldsWhatDiffersFromTheDefaults) {
  TMachine Machine;
  EXPECT_EQ(Written(Machine), "TMachine {\n}\n");
  Machine.SetName("mill");
  Machine.Speed = 0;
  Machine.Running = true;
  Machine.Load = 1.0 / 3;
  Machine.Parts.Add().Name = "wheel";
  Machine.Parts.Add().Tags = {"a b", "c\"d\\"};
  EXPECT_EQ(Written(Machine), "TMachine {\n"
                              "  Name = \"mill\"\n"
                              "  Speed = 0\n"
                              "  Running = true\n"
                              "  Load = 0.3333333333333333\n"
                              "  Parts {\n"
                              "    TPart {\n"
                              "      Name = \"wheel\"\n"
                              "    }\n"
                              "    TPart {\n"
                              "      Tags = [\"a b\" \"c\\\"d\\\\\"]\n"
                              "    }\n"
                              "  }\n"
                              "}\n");
  TMachine Copy;
  Read(Copy, Written(Machine));
  EXPECT_EQ(Written(Copy), Written(Machine));
  EXPECT_EQ(Copy.Asked, (std::vector<std::string>{"wheel", ""}));
}

TEST(ComponentStream, WhatItDoesNotHoldStays) {
  TMachine Machine;
  Machine.Speed = 5;
  Machine.Parts.Add().Name = "wheel";
  Read(Machine, "TMachine {\n  Load = 2\n}\n");
  EXPECT_EQ(Machine.Speed, 5);
  EXPECT_EQ(Machine.Load, 2);
  EXPECT_EQ(Machine.Parts.Count(), 1);
}

TEST(ComponentStream, EveryDoubleAndEveryTextComesBack) {
  TMachine Machine;
  for (const double Value :
       {0.1, 1e-300, 5e-324, -0.0, 1.7976931348623157e308, std::numeric_limits<double>::infinity()}) {
    Machine.Load = Value;
    TMachine Copy;
    Read(Copy, Written(Machine));
    EXPECT_EQ(Copy.Load, Value);
    EXPECT_EQ(std::signbit(Copy.Load), std::signbit(Value));
  }
  std::string All;
  for (int Byte = 1; Byte < 256; ++Byte) {
    All += static_cast<char>(Byte);
  }
  Machine.SetName(All);
  TMachine Copy;
  Read(Copy, Written(Machine));
  EXPECT_EQ(Copy.Name(), All);
}

TEST(ComponentStream, IsTheSameUnderEveryLocale) {
  const tests::TGermanLocale German;
  TMachine Machine;
  Machine.Load = 1234.5;
  EXPECT_EQ(Written(Machine), "TMachine {\n  Load = 1234.5\n}\n");
  TMachine Copy;
  Read(Copy, Written(Machine));
  EXPECT_EQ(Copy.Load, 1234.5);
}

TEST(ComponentStream, ComponentsStandOneBehindTheOther) {
  std::istringstream Stream("TMachine {\nSpeed = 2\n}\n\nTMachine {\nSpeed = 3\n}\n");
  TMachine First;
  TMachine Second;
  ReadComponent(Stream, First);
  ReadComponent(Stream, Second);
  EXPECT_EQ(First.Speed, 2);
  EXPECT_EQ(Second.Speed, 3);
}

std::string ErrorOf(const std::string& Text) {
  TMachine Machine;
  Machine.SetName("mill");
  Machine.Speed = 7;
  Machine.Parts.Add().Name = "wheel";
  const std::string Before = Written(Machine);
  try {
    Read(Machine, Text);
  } catch (const EPropertyError& Error) {
    EXPECT_EQ(Written(Machine), Before) << Text;
    return Error.what();
  }
  return "read";
}

TEST(ComponentStream, AnErrorNamesThePropertyAndItsLineAndChangesNothing) {
  EXPECT_EQ(ErrorOf("M {\n Speed = 3\n\n Colour = 1\n}"),
            "Line 4: a TMachine has no property \"Colour\", or it stands there twice");
  EXPECT_EQ(ErrorOf("M {\n Speed = 3\n Speed = 4\n}"),
            "Line 3: a TMachine has no property \"Speed\", or it stands there twice");
  EXPECT_EQ(ErrorOf("M {\n Load = 3\n Speed = fast\n}"), "Line 3: Speed: it is no whole number of 32 bits");
  EXPECT_EQ(ErrorOf("M {\n Speed = 3\n Load = 1,5\n}"), "Line 3: Load: it is no number");
  EXPECT_EQ(ErrorOf("M {\n Running = 1\n}"), "Line 2: Running: it is neither true nor false");
  EXPECT_EQ(ErrorOf("M {\n Name = mill2\n}"), "Line 2: Name: it is no text in quotes");
  EXPECT_EQ(ErrorOf("M {\n Name = \"a\n}"), "Line 2: Name: the text has no closing quote");
  EXPECT_EQ(ErrorOf("M {\n Name = \"a\" b\n}"), "Line 2: Name: something stands behind the closing quote");
  EXPECT_EQ(ErrorOf("M {\n Name = \"\\q\"\n}"), "Line 2: Name: an unknown character behind a backslash");
  EXPECT_EQ(ErrorOf("M {\n Name = \"\\x4\"\n}").substr(0, 13), "Line 2: Name:");
  EXPECT_EQ(ErrorOf("M {\n Wheels {\n }\n}"),
            "Line 2: a TMachine has no block \"Wheels\", or it stands there twice");
  EXPECT_EQ(ErrorOf("M {\n Parts {\n Size = 1\n }\n}"), "Line 3: \"Size\" stands outside an item of Parts");
  EXPECT_EQ(ErrorOf("M {\n Parts {\n P {\n Colour = 1\n}\n }\n}"),
            "Line 4: a TPart has no property \"Colour\", or it stands there twice");
  EXPECT_EQ(ErrorOf("M {\n Parts {\n P {\n Tags = \"a\"\n}\n }\n}"),
            "Line 4: Tags: it is no list in brackets");
  EXPECT_EQ(ErrorOf("M {\n nonsense\n}"), "Line 2: neither a property nor a block: nonsense");
  EXPECT_EQ(ErrorOf("M {\n Speed = 3\n"), "Line 3: the stream ends before the component does");
  EXPECT_EQ(ErrorOf(""), "Line 1: the stream ends before the component does");
  EXPECT_EQ(ErrorOf("{\n}"), "Line 1: a component stream begins with a class name and an opening brace");
  EXPECT_EQ(ErrorOf("nonsense"), "Line 1: a component stream begins with a class name and an opening brace");
}

TEST(ComponentStream, ASettersRefusalNamesThePropertyAndPutsTheNameBack) {
  TMachine Machine;
  Machine.SetName("mill");
  try {
    Read(Machine, "M {\n Name = \"other\"\n Speed = -1\n}");
    FAIL();
  } catch (const EPropertyError& Error) {
    EXPECT_STREQ(Error.what(), "Line 3: Speed: Speed must not be negative");
    EXPECT_EQ(Error.Line(), 3);
  }
  EXPECT_EQ(Machine.Name(), "mill");
}

TEST(ComponentStream, BlocksMayNotNestWithoutEnd) {
  std::string Text = "M {\n";
  for (int I = 0; I < 100000; ++I) {
    Text += "A {\n";
  }
  EXPECT_EQ(ErrorOf(Text), "Line 17: blocks nested deeper than 16");
}

TEST(ComponentStream, MayBeAsLongAsADocument) {
  const TXMLLimits Before = DefaultXMLLimits;
  DefaultXMLLimits.Bytes = 1000;
  EXPECT_EQ(ErrorOf("M {\n" + std::string(2000, 'x')), "Line 1: the component is longer than 1000 bytes");
  DefaultXMLLimits = Before;
}

TEST(ComponentStream, AStreamThatTakesNothingIsAnError) {
  TMachine Machine;
  std::ostringstream Stream;
  Stream.setstate(std::ios::badbit);
  EXPECT_THROW(WriteComponent(Stream, Machine), std::ios_base::failure);
}

} // namespace
} // namespace qx
