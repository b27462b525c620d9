#pragma once
// What the Reports service tells about the viewers of a deployed page: hits, time, polls,
// surveys and questions.

#include <cstdint>
#include <memory>
#include <string>

#include "brenmoor/client.h"
#include "brenmoor/collection.h"
#include "brenmoor/date.h"
#include "brenmoor/field.h"

namespace brenmoor {

struct PageHitInfo {
  FlaggedField<std::shared_ptr<brenmoor::Client>> Client;
  Field<bool> closed;
  FlaggedField<Date> pagehitDate;
  Field<int32_t> timeSpent;
};

// A participant or a registrant of a page.
struct PageViewerInfo {
  FlaggedField<std::shared_ptr<brenmoor::Client>> Client;
  FlaggedField<Date> firstViewed;
  FlaggedField<Date> lastViewed;
  Field<bool> participated;
  Field<bool> registered;
  Field<int32_t> totalTimeOnPage;
};

struct PollAnswer {
  Field<int32_t> answerID;
  FlaggedField<std::string> answerTxt;
  Field<int32_t> count;
};

struct PollQuestion {
  FlaggedField<std::shared_ptr<Collection<PollAnswer>>> answers;
  FlaggedField<std::string> guid;
  FlaggedField<std::string> questionTxt;
  Field<int32_t> responseCount;
};

struct PollResponse {
  FlaggedField<std::string> answerGuid;
  FlaggedField<Date> responseDt;
  FlaggedField<std::string> userGuid;
  FlaggedField<std::string> pollGuid;
};

struct SurveyAnswer {
  FlaggedField<std::string> answerTxt;
  Field<int32_t> answerType;
  Field<int32_t> col;
  Field<bool> correct;
  Field<int32_t> count;
  FlaggedField<std::string> guid;
  Field<int32_t> row;
};

struct SurveyQuestion {
  FlaggedField<std::shared_ptr<Collection<SurveyAnswer>>> answers;
  Field<int32_t> colCount;
  FlaggedField<std::string> guid;
  Field<int32_t> nonresponseCount;
  FlaggedField<std::string> questionTxt;
  Field<int32_t> questionType;
  Field<int32_t> responseCount;
  Field<int32_t> rowCount;
  Field<int32_t> seqNo;
};

struct SurveyResponse {
  FlaggedField<std::string> answerGuid;
  FlaggedField<std::string> answerTxt;
  FlaggedField<std::string> guid;
  FlaggedField<std::string> questionGuid;
  FlaggedField<Date> responseDt;
  FlaggedField<std::string> userGuid;
};

// `responses` is the caller's: no operation fills it.
struct Survey {
  FlaggedField<std::string> guid;
  FlaggedField<std::string> name;
  FlaggedField<std::shared_ptr<Collection<SurveyQuestion>>> questions;
  FlaggedField<std::shared_ptr<Collection<SurveyResponse>>> responses;
};

// A viewer's question on a page's question-and-answer board, and its answer.
struct QAItem {
  FlaggedField<Date> answerDt;
  FlaggedField<std::string> answerTxt;
  FlaggedField<std::string> category;
  FlaggedField<std::shared_ptr<brenmoor::Client>> Client;
  FlaggedField<std::string> guid;
  FlaggedField<std::string> location;
  FlaggedField<std::string> name;
  FlaggedField<Date> questionDt;
  FlaggedField<std::string> questionTxt;
  FlaggedField<std::string> status;
  FlaggedField<std::string> submitterHostname;
  FlaggedField<std::string> submitterIP;
};

}  // namespace brenmoor
