// The library's own XML forms: a DATARECORD, a TEMPLATE and a THEME read from any text, written
// back and read again, with the look-ups a host makes on what was read.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "brenmoor/data_record.h"
#include "brenmoor/template.h"

namespace {

template <class Read>
void attempt(Read&& read) {
  try {
    read();
  } catch (...) {
  }
}

// Written back and read again: what the library writes it must read.
template <class Form>
void roundTrip(const Form& form) {
  attempt([&] {
    Form again;
    again.readXML(std::string_view(form.getXML()));
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  using namespace brenmoor;

  DataRecord record;
  attempt([&] { record.readXML(text); });
  attempt([&] {
    if (!record.entries() || record.entries()->Count() == 0) return;
    const std::string label = record.entries()->Item(1)->label();
    (void)record.GetEntryValue(label);
    record.SetEntryValue(label, "v", "g");
    (void)record.GetEntry(label);
  });
  roundTrip(record);

  TemplateInfo form;
  attempt([&] { form.readXML(text); });
  attempt([&] { (void)form.GetMetadata("a"); });
  roundTrip(form);

  ThemeInfo theme;
  attempt([&] { theme.readXML(text); });
  roundTrip(theme);
  return 0;
}
