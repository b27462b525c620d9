// Reports against a real sandbox, from real viewing: a deployed page visited by viewers with
// their own cookies (libcurl) and by headless Chromium, a registration, a vote and a question.

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <regex>
#include <string>

#include "brenmoor/brenmoor.h"
#include "sandbox_test.h"

namespace brenmoor {
namespace {

// One viewer's browser: its own cookies, its own User-Agent.
class Viewer {
 public:
  explicit Viewer(const std::string& userAgent) : curl_(curl_easy_init()) {
    curl_easy_setopt(curl_, CURLOPT_USERAGENT, userAgent.c_str());
    curl_easy_setopt(curl_, CURLOPT_COOKIEFILE, "");
    curl_easy_setopt(curl_, CURLOPT_TIMEOUT, 10L);
    curl_easy_setopt(
        curl_, CURLOPT_WRITEFUNCTION, +[](char* data, size_t size, size_t count, void* out) {
          static_cast<std::string*>(out)->append(data, size * count);
          return size * count;
        });
  }
  ~Viewer() { curl_easy_cleanup(curl_); }
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

  std::string get(const std::string& url) { return perform(url, nullptr); }
  std::string post(const std::string& url, const std::string& form) { return perform(url, &form); }

 private:
  std::string perform(const std::string& url, const std::string* form) {
    std::string body;
    curl_easy_setopt(curl_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl_, CURLOPT_HTTPGET, 1L);
    if (form) curl_easy_setopt(curl_, CURLOPT_POSTFIELDS, form->c_str());
    curl_easy_setopt(curl_, CURLOPT_WRITEDATA, &body);
    return curl_easy_perform(curl_) == CURLE_OK ? body : "<failed>";
  }
  CURL* curl_;
};

// The value of the page's hidden field `name`.
std::string field(const std::string& page, const std::string& name) {
  std::smatch m;
  const std::regex re("name=\"" + name + "\" value=\"([^\"]*)\"");
  return std::regex_search(page, m, re) ? m[1].str() : "<missing>";
}

using ReportsEndToEnd = testing::SandboxTest;

TEST_F(ReportsEndToEnd, ReportsWhatViewersDidOnADeployedPage) {
  ASSERT_TRUE(service.Connect(sandbox->baseUrl(), testing::kDemoUser, testing::kDemoPassword,
                              "e2e-tests", "acct-1001-guid", false, true));
  const std::string project = service.createProject("Reports end to end", "");
  const std::string page = service.copyTemplate("tpl-audience", project, "Audience", false);
  ASSERT_FALSE(page.empty()) << service.lastErrMsg();
  DataRecord record;
  record.entries = std::make_shared<Collection<DataRecordEntry>>();
  record.templateGuidList = std::make_shared<Collection<std::string>>();
  record.templateGuidList()->Add(page);
  const std::string recordGuid = service.createDataRecord(record, project, false);
  ASSERT_EQ(service.Deploy({recordGuid}, {page}).size(), 1u) << service.lastErrMsg();
  const std::string link = service.getDeploymentInfo(page)->link();
  ASSERT_EQ(link.rfind(sandbox->baseUrl() + "/live/", 0), 0u) << link;

  // Ann comes twice (her cookie tells), registers, votes and asks; Bo looks once.
  Viewer ann("Mozilla/5.0 (X11; Linux x86_64; rv:120.0) Gecko/20100101 Firefox/120.0");
  ann.get(link);
  const std::string shown = ann.get(link);
  const std::string hit = field(shown, "hit");
  ann.post(link + "register", "hit=" + hit +
                                  "&email=ann%40example.com&firstName=Ann&"
                                  "lastName=Lee&password=pw");
  ann.post(link + "poll", "hit=" + hit + "&poll=" + field(shown, "poll") + "&answer=1");
  ann.post(link + "question", "hit=" + hit + "&question=When%3F&name=Ann&location=NZ");
  ann.get(link + "close?hit=" + hit);
  Viewer bo("curl/7.88.1");
  bo.get(link);
  int hits = 3;

  if (access("/usr/bin/chromium", X_OK) == 0) {
    auto run = testing::runProgram(
        {"/usr/bin/chromium", "--headless", "--no-sandbox", "--disable-gpu", "--dump-dom", link});
    EXPECT_NE(run.out.find("<form"), std::string::npos) << run.err;
    ++hits;
  }

  EXPECT_EQ(service.getTotalPageHits(page), hits);
  EXPECT_EQ(service.getUniquePageHits(page), hits - 1);
  EXPECT_EQ(service.getUniquePageHits(page, {}, {}, "browserType", "=", "Firefox"), 1);
  auto list = service.getPageHitList(page);
  ASSERT_TRUE(list) << service.lastErrMsg();
  ASSERT_EQ(list->Count(), hits);
  bool sawChrome = false;
  for (const auto& h : *list) {
    const auto& details = h->Client() ? h->Client()->details() : nullptr;
    sawChrome = sawChrome || (details && details->browserType() == "Chrome" &&
                              details->operatingSystem() == "Linux");
  }
  EXPECT_EQ(sawChrome, hits == 4);
  EXPECT_EQ(service.getTotalRegistrants(page), 1);
  EXPECT_EQ(service.getRegistrationList(project)->Count(), 1);

  auto polls = service.getPollSummaryResults(page);
  ASSERT_TRUE(polls && polls->Count() == 1) << service.lastErrMsg();
  EXPECT_EQ(polls->Item(1)->answers()->Item(1)->count(), 1);
  EXPECT_EQ(service.getPollResponses(page).size(), 1u);

  auto questions = service.getQAList(page);
  ASSERT_TRUE(questions && questions->Count() == 1) << service.lastErrMsg();
  const std::string item = questions->Item(1)->guid();
  EXPECT_TRUE(service.updateQAItem(item, "Soon"));
  EXPECT_TRUE(service.updateQAItemStatus(item, "answered"));
  questions = service.getQAList(page);
  EXPECT_EQ(questions->Item(1)->answerTxt(), "Soon");
  EXPECT_EQ(questions->Item(1)->status(), "answered");
  EXPECT_TRUE(host->boxes.empty());
}

}  // namespace
}  // namespace brenmoor
