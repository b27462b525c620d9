#pragma once

#include <string_view>
#include <vector>

#include "soap/value.h"
#include "store/report_store.h"
#include "viewers/page_content.h"

namespace sandbox {

class Database;

// PollQuestion records of the page's polls, each with its PollAnswer counts.
std::vector<Fields> poll_summary_records(Database& db, const ReportPage& page,
                                         const PageContent& content);
// PollResponse records, oldest first.
std::vector<Fields> poll_response_records(Database& db, const ReportPage& page,
                                          const PageContent& content);

// The Survey record with its SurveyQuestion and SurveyAnswer counts.
Fields survey_summary_record(Database& db, const ReportPage& page, const SurveyDefinition& survey);
// SurveyResponse records of the questions that were answered, oldest first.
std::vector<Fields> survey_response_records(Database& db, const ReportPage& page,
                                            const SurveyDefinition& survey);

// QAItem records of the questions asked in the range, oldest first.
std::vector<Fields> question_records(Database& db, const ReportPage& page, const TimeRange& range);

}  // namespace sandbox
