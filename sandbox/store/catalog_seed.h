#pragma once

namespace sandbox {

class Database;

// Creates, or restores to its shipped state, the template catalog with its components, the
// themes and the deployment environments. Project copies of templates are left alone.
void seed_catalog(Database& db);

}  // namespace sandbox
