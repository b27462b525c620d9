#pragma once
// Reading a registrant: shared by the registrant listing and the viewer reports.

#include "brenmoor/client.h"
#include "service/fields.h"

namespace brenmoor::users {

void readClientDetails(const service::Fields& in, ClientDetails& d);
// A missing text child fails the read; nil dates and a nil or missing "details" are skipped.
void readClient(const service::Fields& in, Client& c);

}  // namespace brenmoor::users
