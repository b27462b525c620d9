#pragma once
// The asset descriptor: the XML text by which a new asset is registered. Its layout (quotes,
// tabs and line breaks included) is what the service's reader expects, byte for byte.

#include <cstdint>
#include <string>

#include "brenmoor/asset.h"
#include "brenmoor/collection.h"

namespace brenmoor::assets {

class Descriptor {
 public:
  enum class Files { Uploaded, Unmanaged };

  void preventDmp(bool flag) { preventDmp_ = flag; }
  // Registers the asset as the zoom file of `parentGuid`.
  void zoomFor(std::string parentGuid) { zoomParent_ = std::move(parentGuid); }
  // Neither part is escaped: the data goes into a CDATA section as it is.
  void addMetadata(const std::string& label, const std::string& data);

  // The descriptor; representations marked invalid are left out. `activeDate` is the local
  // date and time as text.
  std::string build(const std::string& name, const std::string& description,
                    const std::string& type, const Collection<Representation>& representations,
                    int16_t folderID, Files files, const std::string& activeDate) const;

 private:
  bool preventDmp_ = false;
  std::string zoomParent_;
  std::string metadata_;
};

// The current local date and time in the locale's date and time format.
std::string localDateTimeText();

}  // namespace brenmoor::assets
