#include "recorder/device/asked/xml.h"

#include <gtest/gtest.h>

namespace recorder {
namespace {

TEST(XmlTest, ReadsWhatCamerasWrite) {
  const XmlDocument document(
      R"(<q:a xmlns:q="urn:x"><!-- > & ---><q:u k=" v ">http://h/?a=1&b=2&amp;<?p?>c=3</q:u><u><![CDATA[&raw<]]></u>)");
  const XmlElement root = document.Root();
  EXPECT_EQ(root.Child("urn:x", "u").Text(), "http://h/?a=1&b=2&c=3");
  EXPECT_EQ(root.Child("urn:x", "u").Attribute("k"), "v");
  EXPECT_EQ(root.Child("", "u").Text(), "&raw<");
  EXPECT_EQ(root.Children(kAnyNamespace, "u").size(), 2U);
  EXPECT_FALSE(root.Child("urn:y", "u"));
}

TEST(XmlTest, TakesAnotherNamespaceOrNoneWhereTheRightOneIsMissing) {
  bool isReadByName = false;
  const XmlDocument document(R"(<a xmlns:p="urn:p" xmlns:q="urn:q"><p:u>p</p:u><q:u>q</q:u><r:v>r</r:v></a>)",
                             &isReadByName);
  EXPECT_EQ(document.Root().Child("urn:q", "u").Text(), "q");
  EXPECT_FALSE(isReadByName);
  EXPECT_EQ(document.Root().Child("urn:x", "u").Text(), "p");
  EXPECT_TRUE(isReadByName);
  EXPECT_EQ(document.Root().Children("urn:x", "u").size(), 2U);
  EXPECT_EQ(document.Root().Child("urn:x", "v").Text(), "r") << "its prefix was never declared";
}

TEST(XmlTest, HasNoTagThatItsLimitsHaveNotSeen) {
  for (const char* hidden : {"<r><a <!-- --> b=''/></r>", "<r><a <![CDATA[ b=''/>]]></r>",
                             "<r><![CDATA[\x01<a/>]]></r>", "<r><!-- \x01<a/> --></r>", "<r><<!---->a/></r>"}) {
    const XmlDocument document(hidden);
    EXPECT_TRUE(document.Root()) << hidden;
    EXPECT_FALSE(document.Root().Child("", "a")) << hidden;
  }
}

std::string Attributes(const std::string& name, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += " " + name + std::to_string(i) + "='>'";
  return text;
}

TEST(XmlTest, RefusesWhatOnlyCostsTime) {
  std::string nested;
  for (int i = 0; i < 60; ++i) nested += "<a" + Attributes("xmlns:n", 40) + ">";
  std::string many = "<a>";
  for (int i = 0; i < 60'000; ++i) many += "<a/>";
  std::string manyAttributes = "<a>";
  for (int i = 0; i < 20'000; ++i) manyAttributes += "<a b='' c=''/>";
  std::string elementsInValues = "<a>";
  for (int i = 0; i < 3'000; ++i) elementsInValues += "<a \"<a/><a/><a/><a/><a/><a/><a/><a/><a/><a/>\">";
  const std::string hostile[] = {
      R"(<!DOCTYPE a [<!ENTITY b "bb">]><a>&b;</a>)",
      "<a" + Attributes("a", 5'000) + "/>",
      "<?xml version='1.0' encoding='UTF-7'?>+ADw-a" + Attributes("a", 10) + "/+AD4-",
      nested,
      many,
      manyAttributes,
      elementsInValues,
      "<a>" + std::string(1000, '&') + "</a>",  // becomes five times as long
      "no XML",
      "",
  };
  for (const std::string& text : hostile) EXPECT_FALSE(XmlDocument(text).Root()) << text.substr(0, 60);
}

}  // namespace
}  // namespace recorder
