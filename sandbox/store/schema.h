#pragma once

namespace sandbox {

class Database;

// Creates every table the services use; safe to run on an existing database.
void create_schema(Database& db);

}  // namespace sandbox
