#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/response_store.h"
#include "store/viewing_store.h"
#include "viewers/page_content.h"

namespace sandbox {

// What one viewer sees of a page on this hit.
struct PageState {
  std::string hit;
  bool asks_registration = false;  // the project requires it and the viewer has not registered
  bool registered = false;
  std::vector<ShownQuestion> questions;
};

// The page as plain HTML: every form posts to the page's own paths and carries the hit.
// Everything that came from a viewer or a record is escaped.
std::string page_html(const Page& page, const PageContent& content, const PageState& state);

// A short page that says `text` and leads back to the page (and, with a hit, away from it).
std::string message_html(const Page& page, std::string_view title, std::string_view text,
                         std::string_view hit);

// The answer for a path under /live/ that names no page.
std::string not_found_html();

// "/live/DEPLOYMENT/"
std::string page_path(const Page& page);

}  // namespace sandbox
