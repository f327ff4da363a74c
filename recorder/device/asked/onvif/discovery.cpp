#include "recorder/device/asked/onvif/discovery.h"

#include <random>
#include <string_view>

namespace recorder::onvif {

std::string MakeMessageId() {
  constexpr std::string_view kHex = "0123456789abcdef";
  std::random_device random;
  std::string id = "urn:uuid:";
  for (const char c : std::string_view("xxxxxxxx-xxxx-4xxx-8xxx-xxxxxxxxxxxx")) {
    id += c == 'x' ? kHex[random() & 0x0FU] : c;
  }
  return id;
}

std::string MakeProbe(const std::string& messageId) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>)"
         R"(<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope")"
         R"( xmlns:a="http://schemas.xmlsoap.org/ws/2004/08/addressing")"
         R"( xmlns:d="http://schemas.xmlsoap.org/ws/2005/04/discovery">)"
         R"(<s:Header><a:Action s:mustUnderstand="1">http://schemas.xmlsoap.org/ws/2005/04/discovery/Probe</a:Action>)"
         "<a:MessageID>" +
         messageId +
         "</a:MessageID>"
         "<a:ReplyTo><a:Address>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</a:Address></a:ReplyTo>"
         R"(<a:To s:mustUnderstand="1">urn:schemas-xmlsoap-org:ws:2005:04:discovery</a:To></s:Header>)"
         R"(<s:Body><d:Probe><d:Types xmlns:dn="http://www.onvif.org/ver10/network/wsdl">dn:NetworkVideoTransmitter)"
         "</d:Types></d:Probe></s:Body></s:Envelope>";
}

}  // namespace recorder::onvif
