#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

class Database;

// A deployed template as its viewers reach it.
struct Page {
  std::string deployment_guid;
  std::string template_guid;
  std::string project_guid;
  std::string name;
  std::string link;
};

// The page whose current deployment has that guid; nothing for any other guid.
std::optional<Page> deployed_page(Database& db, std::string_view deployment_guid);
// The deployed templates of every project, oldest project first.
std::vector<Page> deployed_pages(Database& db);

// What one request told about its viewer: the ClientDetails facts a hit keeps.
struct ViewerClient {
  std::string ip;
  std::string host_name;
  std::string browser_type;
  std::int32_t browser_version = 0;
  std::string operating_system;
  std::string language;
  std::string country;
  bool has_cookies = false;
};

// Notes a viewer (a browser, known by its cookie) first seen at `at`; a known one is kept.
void note_viewer(Database& db, std::string_view viewer, std::int64_t at);

// Records a hit on the page at `at`; answers the hit's guid.
std::string insert_hit(Database& db, const Page& page, std::string_view viewer,
                       const ViewerClient& client, std::int64_t at);

struct Hit {
  std::string viewer;
  std::int64_t at = 0;
  ViewerClient client;
};

// A hit on that template; nothing for any other guid.
std::optional<Hit> find_hit(Database& db, std::string_view template_guid,
                            std::string_view hit_guid);

// Closes an open hit, keeping the seconds since it was made; a closed one stays as it is.
void close_hit(Database& db, std::string_view hit_guid, std::int64_t at);

// The guid of the registrant the viewer became in the project, while that registrant exists.
std::optional<std::string> viewer_registrant(Database& db, std::string_view viewer,
                                             std::string_view project_guid);

// Ties the viewer to the registrant its registration made, with the browser it came with.
void link_registrant(Database& db, std::string_view viewer, std::string_view project_guid,
                     std::string_view registrant_guid, const ViewerClient& client);

}  // namespace sandbox
