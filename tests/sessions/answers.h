#pragma once

#include <string>
#include <vector>

#include "tests/sessions/camera_plan.h"

// What cameras were met to answer, the usual first. A new behaviour is a new row.

namespace sessions {

const std::vector<Offer>& Offers();
const std::vector<Answer>& Refusals();
const std::vector<Answer>& Redirects();
const std::vector<Answer>& Descriptions();
const std::vector<Answer>& Grants();
/// Of the second SETUP, over UDP, after a first that refused this connection.
const std::vector<Answer>& UdpGrants();
const std::vector<Answer>& Starts();
/// What is no answer, or none to be read.
const std::vector<Answer>& Troubles();
/// Answers of any request that end a session.
const std::vector<Answer>& Statuses();
/// What cameras ask their clients, and bytes that belong to nothing between packets.
const std::vector<std::string>& Questions();
const std::vector<std::string>& Strays();

}  // namespace sessions
