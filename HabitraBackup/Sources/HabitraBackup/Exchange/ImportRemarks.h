#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace habitra {

/// What whoever made a document from something else has to say of it, in whole sentences for a person. It is no part of
/// the document, which is the same however it was come by; an import hands it on in its report.
struct ImportRemarks {
  std::vector<std::string> ofAll;
  std::map<std::size_t, std::vector<std::string>> ofTask;  ///< by the task's place in the document
};

}  // namespace habitra
