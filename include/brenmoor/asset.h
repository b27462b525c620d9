#pragma once
// Assets: media files kept by the Assets service, in numbered folders.

#include <cstdint>
#include <string>

#include "brenmoor/date.h"
#include "brenmoor/field.h"

namespace brenmoor {

// One file (or, for an unmanaged asset, one URL) of an asset being created. The caller fills
// the description; the creation writes back guid, filename, size and invalid into the same
// object.
struct Representation {
  Field<std::string> guid;       // the upload's key, written by CreateAsset()
  Field<std::string> localPath;  // the file to upload
  Field<std::string> filename;   // written by the creation; for an unmanaged asset, its URL
  Field<std::string> repType;
  Field<std::string> fileType;
  Field<int16_t> bw;                 // bandwidth
  Field<std::string> metadataLabel;  // the tag of the one metadata entry; empty: none
  Field<std::string> Metadata;       // its text (line breaks are dropped)
  Field<int16_t> width;
  Field<int16_t> height;
  Field<int32_t> size;  // unmanaged assets only
  Field<bool> invalid;  // the upload failed: the asset is registered without it
};

// One asset-level metadata entry.
struct Metadata {
  Field<std::string> label;
  Field<std::string> data;
};

// One folder of a folder tree.
struct ZylFolderNode {
  Field<int16_t> id;
  Field<int16_t> parentID;
  Field<std::string> name;
  Field<int16_t> parentCount;  // depth: the number of ancestors
  Field<std::string> rights;
};

// One asset of a listing.
struct ZylAsset {
  Field<std::string> guid;
  Field<std::string> name;
  Field<std::string> description;
  Field<std::string> thumbnail;
  Field<Date> created;
  Field<std::string> typeIcon;
  Field<std::string> typeText;
};

}  // namespace brenmoor
