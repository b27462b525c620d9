#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

class Database;

struct NewUser {
  std::string first_name;
  std::string last_name;
  std::string email;
  std::string password_md5;
};

// Whether a user (closed or not) has the address, case ignored.
bool email_taken(Database& db, std::string_view email);

// Adds the user; answers its id.
std::int64_t insert_user(Database& db, const NewUser& user);

// Opens an account named `name` with `owner` as its only member, its asset folders and a
// fresh account key; answers the account's id.
std::int64_t open_account(Database& db, std::int64_t owner, std::string_view name);

void add_member(Database& db, std::int64_t account, std::int64_t user,
                std::string_view account_type);

std::optional<std::int64_t> account_with_key(Database& db, std::string_view key);

// The stored password digest of the account's member with that address.
std::optional<std::string> member_password_md5(Database& db, std::int64_t account,
                                               std::string_view email);

void set_password_md5(Database& db, std::int64_t user, std::string_view digest);

// The projects that go with the user's account, counted before closing.
int projects_of_sole_accounts(Database& db, std::int64_t user);

// Ends the user: sign-in is refused from now on, memberships go (with the projects of every
// account the user was the last member of), and open sessions lose their account.
void close_user(Database& db, std::int64_t user);

// One line of the admin listing.
struct AccountListing {
  std::int64_t id = 0;
  std::string key;
  std::string name;
  std::string members;  // e-mail addresses, comma-separated
};
std::vector<AccountListing> list_accounts(Database& db);

}  // namespace sandbox
