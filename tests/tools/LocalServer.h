// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>

/// The address of a port of this machine; 0: one that nobody has.
inline sockaddr_in LocalAddress(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// The port in an address such as http://127.0.0.1:80/.
inline int PortOf(const std::string& address) {
  return std::stoi(address.substr(address.rfind(':') + 1));
}

/// A socket that is connected to a port of this machine.
inline int ConnectedTo(int port) {
  const sockaddr_in server = LocalAddress(port);
  const int descriptor = ::socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_EQ(::connect(descriptor, reinterpret_cast<const sockaddr*>(&server), sizeof server), 0);
  return descriptor;
}
