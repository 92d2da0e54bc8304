// Names of records as tavi-build writes them. A material's name is also the file name of its
// document (the client looks for <folder><name>.xml), so names keep to characters that every
// file system takes, fit the record's 64 characters with room for a suffix, and are unique.
#pragma once
#include <set>
#include <string>

namespace builder {

class RecordNames {
  public:
    // `raw` made safe and unique among the names this object gave; `fallback` when nothing of
    // `raw` is left. Comparison ignores ASCII case, as the client's look-up does.
    std::string take(const std::string& raw, const std::string& fallback);

  private:
    std::set<std::string> taken_; // folded to lower case
};

} // namespace builder
