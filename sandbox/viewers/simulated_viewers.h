#pragma once

#include <cstdint>
#include <string_view>

namespace sandbox {

class Database;

// Adds `count` synthetic viewers, spread over the 30 days before `now`, to the pages of the
// demo project "Viewer Demo" (made in account 1001 with deployed copies of the Title Page,
// Q&A Panel and Audience Response templates if it is missing). They visit, leave, register,
// vote, answer the survey and ask questions through the same steps as real viewers; the same
// seed gives the same viewers.
void simulate_viewers(Database& db, int count, std::uint32_t seed, std::string_view base_url,
                      std::int64_t now);

}  // namespace sandbox
