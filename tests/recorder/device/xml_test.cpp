#include "recorder/device/xml.h"

#include <gtest/gtest.h>

namespace recorder {
namespace {

TEST(XmlTest, ReadsWhatCamerasWrite) {
  const XmlDocument document(
      R"(<q:a xmlns:q="urn:x"><!-- > --><q:u k=" v ">http://h/?a=1&b=2&amp;c=3</q:u><u><![CDATA[&raw<]]></u>)");
  const XmlElement root = document.Root();
  EXPECT_EQ(root.Child("urn:x", "u").Text(), "http://h/?a=1&b=2&c=3");
  EXPECT_EQ(root.Child("urn:x", "u").Attribute("k"), "v");
  EXPECT_EQ(root.Child("", "u").Text(), "&raw<");
  EXPECT_EQ(root.Children(kAnyNamespace, "u").size(), 2U);
  EXPECT_FALSE(root.Child("urn:y", "u"));
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
  for (int i = 0; i < 200'000; ++i) many += "<a/>";
  const std::string hostile[] = {
      R"(<!DOCTYPE a [<!ENTITY b "bb">]><a>&b;</a>)",
      "<a" + Attributes("a", 5'000) + "/>",
      "<?xml version='1.0' encoding='UTF-7'?>+ADw-a" + Attributes("a", 10) + "/+AD4-",
      nested,
      many,
      "no XML",
      "",
  };
  for (const std::string& text : hostile) EXPECT_FALSE(XmlDocument(text).Root()) << text.substr(0, 60);
}

}  // namespace
}  // namespace recorder
