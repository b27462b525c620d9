#pragma once
// Brenmoor: the client library of the Telvane services.

#include "brenmoor/asset.h"
#include "brenmoor/collection.h"
#include "brenmoor/contact_form.h"
#include "brenmoor/data_record.h"
#include "brenmoor/date.h"
#include "brenmoor/deployment.h"
#include "brenmoor/error.h"
#include "brenmoor/field.h"
#include "brenmoor/host.h"
#include "brenmoor/project.h"
#include "brenmoor/template.h"
#include "brenmoor/trace.h"
#include "brenmoor/user_account_info.h"
#include "brenmoor/version.h"
#include "brenmoor/zyl_service.h"
