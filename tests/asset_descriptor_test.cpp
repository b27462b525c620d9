// The asset descriptor, byte for byte.

#include <gtest/gtest.h>

#include <memory>
#include <regex>

#include "assets/descriptor.h"

namespace brenmoor::assets {
namespace {

std::shared_ptr<Representation> representation(const std::string& filename,
                                               const std::string& guid) {
  auto r = std::make_shared<Representation>();
  r->repType = "video";
  r->fileType = "mp4";
  r->bw = 300;
  r->width = 640;
  r->height = -1;
  r->size = 1234;
  r->filename = filename;
  r->guid = guid;
  return r;
}

TEST(AssetDescriptor, WritesBothVariantsExactly) {
  Collection<Representation> reps;
  reps.Add(representation("talk 1.mp4", "up-1"));
  reps.Item(1)->metadataLabel = "notes";
  reps.Item(1)->Metadata = "line\r\none\f\vend\ttab";
  auto failed = representation("lost.mp4", "");
  failed->invalid = true;
  reps.Add(failed);
  reps.Add(representation("http://h/a?b=1&c=2", "up-2"));
  reps.Item(3)->metadataLabel = "empty";

  Descriptor d;
  d.preventDmp(true);
  d.zoomFor("parent-1");
  d.addMetadata("k<1>", "v\r\n&");
  d.addMetadata("k2", "]]>");

  const std::string head =
      "<ASSET type='video' folder_id='-3' nodmp='true' ownerAssetID='1'><STATUS>ACTIVE</STATUS>"
      "<ACTIVEDATE>11/23/26 14:00:00</ACTIVEDATE><NAME>A &amp; &lt;B&gt; &quot;C&quot; "
      "&apos;D&apos;</NAME><DESCRIPTION>x&amp;amp;</DESCRIPTION>"
      "<METADATA tag=\"k<1>\"><![CDATA[v\r\n&]]></METADATA>"
      "<METADATA tag=\"k2\"><![CDATA[]]>]]></METADATA>";
  const std::string tail = "<RELATION type='ZOOMFILE' parent_guid='parent-1'></RELATION></ASSET>";
  const std::string open =
      "\t<REPRESENTATION reptype=\"video\" filetype=\"mp4\" language=\"ENGLISH\" "
      "bandwidth=\"300\" width=\"640\" height=\"-1\"";
  const std::string files =
      open + ">\r\n\t\t<METADATA tag=\"notes\"><![CDATA[lineoneend\ttab]]></METADATA>\r\n" +
      "\t\t<FILES>\r\n\t\t\t<LOCATION type=\"file\">\r\n\t\t\t\t<SERVER></SERVER>\r\n"
      "\t\t\t\t<USERNAME></USERNAME>\r\n\t\t\t\t<PASSWORD></PASSWORD>\r\n\t\t\t\t<PATH>\r\n"
      "\t\t\t\t\t<DIRECTORY><![CDATA[]]></DIRECTORY>\r\n\t\t\t\t\t<FILE>\r\n"
      "\t\t\t\t\t\t<NAME rename=\"talk 1.mp4\">up-1</NAME>\r\n\t\t\t\t\t</FILE>\r\n"
      "\t\t\t\t</PATH>\r\n\t\t\t</LOCATION>\r\n\t\t</FILES>\r\n\t</REPRESENTATION>\r\n" +
      open + ">\r\n\t\t<METADATA tag=\"empty\"><![CDATA[]]></METADATA>\r\n\t\t<FILES>\r\n" +
      "\t\t\t<LOCATION type=\"file\">\r\n\t\t\t\t<SERVER></SERVER>\r\n"
      "\t\t\t\t<USERNAME></USERNAME>\r\n\t\t\t\t<PASSWORD></PASSWORD>\r\n\t\t\t\t<PATH>\r\n"
      "\t\t\t\t\t<DIRECTORY><![CDATA[]]></DIRECTORY>\r\n\t\t\t\t\t<FILE>\r\n"
      "\t\t\t\t\t\t<NAME rename=\"http://h/a?b=1&c=2\">up-2</NAME>\r\n\t\t\t\t\t</FILE>\r\n"
      "\t\t\t\t</PATH>\r\n\t\t\t</LOCATION>\r\n\t\t</FILES>\r\n\t</REPRESENTATION>\r\n";
  EXPECT_EQ(d.build("A & <B> \"C\" 'D'", "x&amp;", "video", reps, -3, Descriptor::Files::Uploaded,
                    "11/23/26 14:00:00"),
            head + files + tail);

  const std::string urls =
      open + " size=\"1234\">\r\n\t\t<METADATA tag=\"notes\"><![CDATA[lineoneend\ttab]]>" +
      "</METADATA>\r\n\t\t<FILES>\r\n\t\t\t<LOCATION type=\"unmanaged\">\r\n" +
      "\t\t\t\t<URL>talk 1.mp4</URL>\r\n\t\t\t</LOCATION>\r\n\t\t</FILES>\r\n" +
      "\t</REPRESENTATION>\r\n" + open + " size=\"1234\">\r\n" +
      "\t\t<METADATA tag=\"empty\"><![CDATA[]]></METADATA>\r\n\t\t<FILES>\r\n" +
      "\t\t\t<LOCATION type=\"unmanaged\">\r\n\t\t\t\t<URL>http://h/a?b=1&amp;c=2</URL>\r\n" +
      "\t\t\t</LOCATION>\r\n\t\t</FILES>\r\n\t</REPRESENTATION>\r\n";
  EXPECT_EQ(d.build("A & <B> \"C\" 'D'", "x&amp;", "video", reps, -3, Descriptor::Files::Unmanaged,
                    "11/23/26 14:00:00"),
            head + urls + tail);
}

TEST(AssetDescriptor, IsCompleteWithoutRepresentationsOrOptions) {
  EXPECT_EQ(Descriptor().build("n", "", "image", {}, 0, Descriptor::Files::Uploaded, "now"),
            "<ASSET type='image' folder_id='0'><STATUS>ACTIVE</STATUS><ACTIVEDATE>now"
            "</ACTIVEDATE><NAME>n</NAME><DESCRIPTION></DESCRIPTION></ASSET>");
  // The active date is the local time in the locale's own form: digits and separators.
  EXPECT_TRUE(std::regex_match(localDateTimeText(), std::regex("[0-9/.: -]+")));
}

}  // namespace
}  // namespace brenmoor::assets
