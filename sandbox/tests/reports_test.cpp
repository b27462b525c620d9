#include <vector>

#include "project_fixture.h"
#include "store/database.h"
#include "store/deployment_store.h"

namespace sandbox::testing {
namespace {

constexpr std::string_view kReportsNs = "urn:telvane-reports";
constexpr std::string_view kChromeLinux =
    "Mozilla/5.0 (X11; Linux x86_64) AppleWebKit/537.36 (KHTML, like Gecko) "
    "Chrome/124.0.0.0 Safari/537.36";
constexpr std::string_view kFirefoxWindows =
    "Mozilla/5.0 (Windows NT 10.0; Win64; x64; rv:125.0) Gecko/20100101 Firefox/125.0";

// The value of the first form field `name` on a page.
std::string field_value(const std::string& html, std::string_view name) {
  const std::string marker = "name=\"" + std::string(name) + "\" value=\"";
  const auto at = html.find(marker);
  if (at == std::string::npos) return {};
  const auto begin = at + marker.size();
  return html.substr(begin, html.find('"', begin) - begin);
}

// A browser of its own, keeping the viewer cookie once it is given one.
struct Viewer {
  Viewer(std::string user_agent, std::string language, std::string cookie = "")
      : user_agent(std::move(user_agent)),
        language(std::move(language)),
        cookie(std::move(cookie)) {}

  std::string user_agent;
  std::string language;
  std::string cookie;
  std::string html;    // of the page as last seen
  std::string hit;     // of that visit
  std::string answer;  // to the last form
  int status = 0;

  void visit(httplib::Client& http, const std::string& path) {
    httplib::Headers headers{{"User-Agent", user_agent}, {"Accept-Language", language}};
    if (!cookie.empty()) headers.emplace("Cookie", cookie);
    const auto result = http.Get(path, headers);
    ASSERT_TRUE(result);
    status = result->status;
    html = result->body;
    hit = field_value(html, "hit");
    const std::string set = result->get_header_value("Set-Cookie");
    if (!set.empty()) cookie = set.substr(0, set.find(';'));
  }
  void post(httplib::Client& http, const std::string& path, httplib::Params form) {
    form.emplace("hit", hit);
    const auto result = http.Post(path, httplib::Headers{{"User-Agent", user_agent}}, form);
    ASSERT_TRUE(result);
    status = result->status;
    answer = result->body;
  }
};

class ReportsTest : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    sign_in();
    const std::string project = create_project("Launch");
    template_ = copy_template("tpl-audience", project, false).value();
    Database db(data_dir_ / "sandbox.sqlite3");
    deployment_ = deploy_template(db, template_, server_->base_url()).deployment_guid;
    page_ = "/live/" + deployment_ + "/";
    const std::string& base = server_->base_url();
    http_ =
        std::make_unique<httplib::Client>("127.0.0.1", std::stoi(base.substr(base.rfind(':') + 1)));
  }

  Answer reports(std::string_view operation, std::string_view arguments) {
    return call("Reports", kReportsNs, operation, arguments);
  }
  std::string page_args() const {
    return arg("pageGuid", "string", template_) +
           arg("startDate", "dateTime", "1899-12-30T00:00:00Z") +
           arg("endDate", "dateTime", "2100-01-01T00:00:00Z");
  }
  std::string count(std::string_view operation) { return reports(operation, page_args()).value(); }
  std::string unique(std::string_view filter, std::string_view op, std::string_view value) {
    return reports("getUniquePageHits", page_args() + arg("filter", "string", filter) +
                                            arg("filterOperator", "string", op) +
                                            arg("filterValue", "string", value))
        .value();
  }
  static std::vector<pugi::xml_node> items(const Answer& answer) {
    std::vector<pugi::xml_node> records;
    for (pugi::xml_node item : answer.return_element().children("item")) {
      records.push_back(answer.referenced(item));
    }
    return records;
  }

  std::string template_;
  std::string deployment_;
  std::string page_;
  std::unique_ptr<httplib::Client> http_;
};

TEST_F(ReportsTest, ViewersMakeTheCountsAndListsThatReportsAnswer) {
  httplib::Client& http = *http_;
  Viewer alice{std::string(kChromeLinux), "en-GB,en;q=0.8"};
  Viewer bob{std::string(kFirefoxWindows), "de-DE"};
  Viewer carol{"curl/8.5.0", ""};
  alice.visit(http, page_);
  ASSERT_EQ(alice.status, 200);
  EXPECT_TRUE(alice.cookie.starts_with("TelvaneViewer="));
  EXPECT_NE(alice.html.find("id=\"registration\""), std::string::npos);
  alice.visit(http, page_);
  bob.visit(http, page_);
  bob.visit(http, page_);
  carol.visit(http, page_);

  alice.post(http, page_ + "register", {{"email", "alice@example.com"}, {"firstName", "Alice"}});
  EXPECT_EQ(alice.status, 200);
  alice.visit(http, page_);
  EXPECT_EQ(alice.html.find("id=\"registration\""), std::string::npos);
  alice.post(http, page_ + "poll", {{"poll", field_value(alice.html, "poll")}, {"answer", "2"}});
  EXPECT_EQ(alice.status, 200);
  bob.post(http, page_ + "question", {{"question", "Is <b>it</b> live?"}, {"name", "Bob"}});
  EXPECT_EQ(bob.status, 200);
  carol.post(http, page_ + "poll", {{"poll", "not-a-poll"}, {"answer", "1"}});
  EXPECT_EQ(carol.status, 400);
  EXPECT_EQ(http.Get(page_ + "close?hit=" + bob.hit)->status, 200);

  EXPECT_EQ(count("getTotalPageHits"), "6");
  EXPECT_EQ(reports("getTotalPageHits", arg("pageGuid", "string", deployment_) +
                                            arg("startDate", "dateTime", "1899-12-30T00:00:00Z") +
                                            arg("endDate", "dateTime", "2100-01-01T00:00:00Z"))
                .value(),
            "6");
  EXPECT_EQ(unique("", "", ""), "3");
  EXPECT_EQ(unique("country", "=", "gb"), "1");
  EXPECT_EQ(unique("browserType", "!=", "Chrome"), "2");
  EXPECT_EQ(unique("operatingSystem", "=", "Windows"), "1");
  EXPECT_EQ(count("getTotalParticipants"), "2");
  EXPECT_EQ(count("getTotalNonparticipants"), "1");
  EXPECT_EQ(count("getTotalParticipantRegistrants"), "1");
  const Answer registrants = reports("getTotalRegistrants", arg("pageGuid", "string", template_));
  EXPECT_EQ(registrants.value(), "1");
  EXPECT_STREQ(registrants.return_element().attribute("xsi:type").value(), "xsd:short");

  const Answer hits = reports("getPageHitList_Array", page_args());
  const auto hit_list = items(hits);
  ASSERT_EQ(hit_list.size(), 6u);
  const pugi::xml_node first_client = hits.referenced(hit_list[0].child("client"));
  EXPECT_STREQ(first_client.child("email").text().get(), "alice@example.com");
  const pugi::xml_node details = hits.referenced(first_client.child("details"));
  EXPECT_STREQ(details.child("browserType").text().get(), "Chrome");
  EXPECT_STREQ(details.child("browserVersion").text().get(), "124");
  EXPECT_STREQ(details.child("operatingSystem").text().get(), "Linux");
  EXPECT_STREQ(details.child("language").text().get(), "en-GB");
  EXPECT_STREQ(details.child("hasCookies").text().get(), "false");
  EXPECT_STREQ(hits.referenced(hits.referenced(hit_list[1].child("client")).child("details"))
                   .child("hasCookies")
                   .text()
                   .get(),
               "true");
  EXPECT_STREQ(hit_list[5].child("closed").text().get(), "false");
  int closed = 0;
  for (pugi::xml_node hit : hit_list) closed += hit.child("closed").text().as_bool() ? 1 : 0;
  EXPECT_EQ(closed, 1);

  // The answer owns the nodes: keep it while they are read.
  const Answer participantList = reports("getParticipantList_Array", page_args());
  const auto participants = items(participantList);
  ASSERT_EQ(participants.size(), 2u);
  EXPECT_STREQ(participants[0].child("registered").text().get(), "true");
  EXPECT_STREQ(participants[1].child("registered").text().get(), "false");
  EXPECT_EQ(items(reports("getRegistrantList_Array", page_args())).size(), 1u);

  const Answer polls = reports("getPollSummaryResults_Array", arg("pageGuid", "string", template_));
  const pugi::xml_node poll = items(polls).at(0);
  EXPECT_STREQ(poll.child("responseCount").text().get(), "1");
  const pugi::xml_node good = polls.referenced(poll.child("answers").child("item").next_sibling());
  EXPECT_STREQ(good.child("answerTxt").text().get(), "Good");
  EXPECT_STREQ(good.child("count").text().get(), "1");
  EXPECT_EQ(
      items(reports("getPollResponseList_Array", arg("pageGuid", "string", template_))).size(), 1u);
}

TEST_F(ReportsTest, QuestionsAreAnsweredAndMovedAndReportsNeedASession) {
  httplib::Client& http = *http_;
  Viewer viewer{std::string(kChromeLinux), "fr-FR"};
  viewer.visit(http, page_);
  viewer.post(http, page_ + "question", {{"question", "When is the break?"}});
  const Answer qaList = reports("getQAList_Array", page_args());
  const auto asked = items(qaList);
  ASSERT_EQ(asked.size(), 1u);
  const std::string guid = asked[0].child("guid").text().get();
  EXPECT_STREQ(asked[0].child("status").text().get(), "approved");
  EXPECT_TRUE(asked[0].child("answerDt").attribute("xsi:nil").as_bool());

  EXPECT_EQ(reports("updateQAItem", arg("guid", "string", guid) + arg("answer", "string", "At 3") +
                                        arg("question", "string", "") + arg("name", "string", "") +
                                        arg("location", "string", ""))
                .value(),
            "true");
  const Answer answeredList = reports("getQAList_Array", page_args());
  const auto answered = items(answeredList);
  EXPECT_STREQ(answered[0].child("answerTxt").text().get(), "At 3");
  EXPECT_STREQ(answered[0].child("status").text().get(), "answered");
  viewer.visit(http, page_);
  EXPECT_NE(viewer.html.find("At 3"), std::string::npos);

  const auto status = [&](std::string_view value) {
    return reports("updateQAItemStatus",
                   arg("guid", "string", guid) + arg("status", "string", value));
  };
  EXPECT_EQ(status("archived").value(), "true");
  EXPECT_EQ(fault_code(status("lost")), "tv:InvalidStatus");
  viewer.visit(http, page_);
  EXPECT_EQ(viewer.html.find("At 3"), std::string::npos);

  EXPECT_EQ(reports("getReportOfDoom", page_args()).fault_string(),
            "java.lang.Exception: No such operation 'getReportOfDoom' on service Reports");
  cookie_.clear();
  const Answer refused = reports("getTotalPageHits", page_args());
  EXPECT_EQ(refused.status, 500);
  EXPECT_NE(refused.fault_string().find("No session"), std::string::npos);
}

TEST_F(ReportsTest, HostileViewersBreakNothing) {
  httplib::Client& http = *http_;
  std::string noise = "<script>" + std::string(6000, 'x');
  // Control characters, but no line ends: those would end the header.
  for (std::size_t i = 10; i < noise.size(); i += 7) noise[i] = static_cast<char>(1 + i % 8);
  noise += "\xff\xfe\xc0\x80";
  Viewer hostile{noise, noise, "TelvaneViewer=<script>"};
  hostile.visit(http, page_);
  EXPECT_EQ(hostile.status, 200);
  EXPECT_TRUE(hostile.cookie.starts_with("TelvaneViewer=") && hostile.cookie.size() == 46);
  hostile.post(http, page_ + "question", {{"question", noise}, {"name", noise}});
  hostile.visit(http, page_);
  EXPECT_EQ(hostile.html.find("<script>"), std::string::npos);
  EXPECT_NE(hostile.html.find("&lt;script&gt;"), std::string::npos);
  EXPECT_EQ(http.Post(page_ + "question", std::string(100 * 1024, 'a'),
                      "application/x-www-form-urlencoded")
                ->status,
            413);
  EXPECT_EQ(http.Get("/live/nothing/")->status, 404);
  EXPECT_EQ(http.Get(page_ + "close?hit=%00")->status, 400);

  for (std::string_view list : {"getPageHitList_Array", "getQAList_Array"}) {
    const Answer answer = reports(list, page_args());
    EXPECT_EQ(answer.status, 200);
    EXPECT_TRUE(answer.document.document_element()) << "not well-formed: " << list;
  }
  const Answer hitList = reports("getPageHitList_Array", page_args());
  const auto hit = items(hitList).at(0);
  EXPECT_EQ(hit.child("client").empty(), false);
}

}  // namespace
}  // namespace sandbox::testing
