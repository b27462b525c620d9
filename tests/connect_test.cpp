// Connect and its contacting form, through a host that records each step and presses OK.

#include <string>
#include <vector>

#include "brenmoor/brenmoor.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::Reply;
using testing::scalarAnswer;

const std::string kShown = "shown Telvane Service: Contacting Telvane. Please wait...";
const std::string kSettingsText =
    "The User Name or Password you have entered in the Settings dialog is invalid. Remember, the "
    "User Name is the email address you provided in the account setup screen";
const std::string kAccountText = "Could not log in to the selected account";

Reply loginAnswer(const std::string& op, const std::string& value,
                  const std::string& type = "string") {
  return Reply::xml(scalarAnswer(op, value, type, "urn:telvane-login"));
}
Reply compatible(bool yes) {
  return loginAnswer("isCompatible", yes ? "true" : "false", "boolean");
}
std::vector<Reply> signIn() {
  return {loginAnswer("getChallenge", "c"), loginAnswer("userLogin", "tok"),
          Reply::xml(scalarAnswer("getVersion", "3.2.4.60"))};
}
Reply wrongPassword() {
  return Reply::withStatus(500, testing::serverFault("java.lang.Exception: The user id or "
                                                     "password you have entered is invalid."));
}
Reply accounts(const std::vector<int>& ids) {
  std::string items, refs;
  for (size_t i = 0; i < ids.size(); ++i) {
    const std::string id = "id" + std::to_string(i);
    items += "<item href=\"#" + id + "\"/>";
    refs += "<multiRef id=\"" + id + "\" soapenc:root=\"0\"><accountID xsi:type=\"xsd:int\">" +
            std::to_string(ids[i]) + "</accountID><accountName>A</accountName></multiRef>";
  }
  return Reply::xml(testing::soapEnvelope(
      "<ns1:getUserAccountsResponse xmlns:ns1=\"urn:telvane-login\"><getUserAccountsReturn "
      "soapenc:arrayType=\"ns2:UserAccountInfo[" +
      std::to_string(ids.size()) + "]\">" + items +
      "</getUserAccountsReturn></ns1:getUserAccountsResponse>" + refs));
}

class ConnectTest : public testing::WireTest {
 protected:
  void script(std::vector<Reply> replies) {
    for (auto& reply : replies) server.enqueue(std::move(reply));
  }
  bool connect(const std::string& accountGuid = "") {
    return service.Connect(server.baseUrl(), "ann@example.com", "secret", "authoring-tool",
                           accountGuid, false, true);
  }
  std::vector<std::string> operations() const {
    std::vector<std::string> ops;
    for (const auto& request : server.requests()) {
      const auto at = request.body.find("<S:Body><a:") + 11;
      ops.push_back(request.body.substr(at, request.body.find_first_of(" >", at) - at));
    }
    return ops;
  }
};

TEST_F(ConnectTest, SignsInAndSelectsTheGivenOrTheFirstAccount) {
  service.ShowAlerts(true);
  script({compatible(true)});
  script(signIn());
  script({accounts({7, 9}), loginAnswer("selectAccount", "true", "boolean")});
  ASSERT_TRUE(connect());
  EXPECT_EQ(operations(),
            (std::vector<std::string>{"isCompatible", "getChallenge", "userLogin", "getVersion",
                                      "getUserAccounts", "selectAccount"}));
  EXPECT_NE(server.lastRequest().body.find(">7</account_id>"), std::string::npos);
  EXPECT_EQ(host->formSteps, std::vector<std::string>{kShown});
  EXPECT_TRUE(service.showAlerts());
  EXPECT_EQ(service.sourceSystem(), "authoring-tool");
  EXPECT_EQ(service.baseUrl(), server.baseUrl());

  script({compatible(true)});
  script(signIn());
  script({loginAnswer("selectAccountByGuid", "true", "boolean")});
  EXPECT_TRUE(connect("acct-guid"));
  EXPECT_EQ(operations().back(), "selectAccountByGuid");
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(ConnectTest, EndsEachFailureAsTheFormShowsIt) {
  struct Case {
    const char* what;
    bool alerts;
    std::vector<Reply> replies;
    std::vector<std::string> steps;  // after the form is shown
  };
  auto then = [](std::vector<Reply> a, const std::vector<Reply>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
  };
  const std::vector<Case> cases = {
      {"wrong password, alerts on",
       true,
       {compatible(true), loginAnswer("getChallenge", "c"), wrongPassword()},
       {"text " + kSettingsText, "OK shown", "OK pressed"}},
      {"wrong password, alerts off",
       false,
       {compatible(true), loginAnswer("getChallenge", "c"), wrongPassword()},
       {"text " + kSettingsText}},
      {"version mismatch", true, {compatible(false)}, {}},
      {"no answer",
       true,
       {Reply::text(503, "down")},
       {"text <unreachable>", "OK shown", "OK pressed"}},
      {"account list fails",
       true,
       then({compatible(true)}, then(signIn(), {Reply::text(503, "down")})),
       {"text " + kAccountText, "OK shown", "OK pressed"}},
      {"account list empty",
       false,
       then({compatible(true)}, then(signIn(), {accounts({})})),
       {"text " + kAccountText}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    host->formSteps.clear();
    service.ShowAlerts(c.alerts);
    server.setDefault(Reply::drop());
    for (const auto& reply : c.replies) server.enqueue(reply);
    EXPECT_FALSE(connect());
    std::vector<std::string> expected{kShown};
    for (auto step : c.steps) {
      if (step == "text <unreachable>") step = "text " + service.lastErrMsg();
      expected.push_back(step);
    }
    EXPECT_EQ(host->formSteps, expected);
    EXPECT_EQ(service.showAlerts(), c.alerts);
    // Alerts were off while contacting: only fault boxes of the server could show.
    for (const auto& box : host->boxes) EXPECT_NE(box.title, "Telvane");
  }
}

TEST_F(ConnectTest, FollowsErrorFieldsThatEarlierCallsLeft) {
  // A fault writes no error fields: the form reads what the last failure left, so a refused
  // sign-in after an earlier wrong password still reads as a wrong password.
  service.setLastErrID(5);
  service.setLastErrMsg("left over");
  script({Reply::xml(testing::applicationFault("tv:Busy", "busy", "0"))});
  EXPECT_FALSE(connect());
  EXPECT_EQ(host->formSteps, std::vector<std::string>{kShown});  // closed without a word

  host->formSteps.clear();
  service.setLastErrID(4);
  service.setLastErrMsg("The user id or password you have entered is invalid.");
  script({compatible(true), loginAnswer("getChallenge", "c"),
          Reply::xml(testing::applicationFault("tv:Locked", "locked", "0")),
          Reply::xml(scalarAnswer("getVersion", "3.2.4.60"))});
  EXPECT_FALSE(connect());
  EXPECT_EQ(host->formSteps, (std::vector<std::string>{kShown, "text " + kSettingsText}));
}

TEST_F(ConnectTest, NeedsASourceSystemAndRestoresAlertsWhateverHappens) {
  service.ShowAlerts(false);
  EXPECT_FALSE(service.Connect("http://127.0.0.1:1", "u", "p", ""));
  ASSERT_EQ(host->boxes.size(), 1u);
  EXPECT_EQ(host->boxes[0].text, "Please supply a valid source system string");
  EXPECT_EQ(service.baseUrl(), server.baseUrl());
  EXPECT_TRUE(server.requests().empty());
  EXPECT_TRUE(host->formSteps.empty());

  service.ShowAlerts(true);
  host->throwOnShow = true;
  EXPECT_THROW(connect(), std::runtime_error);
  EXPECT_TRUE(service.showAlerts());
}

}  // namespace
}  // namespace brenmoor
