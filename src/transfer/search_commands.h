// The search field and its button: hands the user's words to the query sender. It keeps nothing.
#pragma once

#include "form/form.h"
#include "net/questions.h"

namespace velmora {

class SearchCommands {
 public:
  SearchCommands(Form& form, QuerySender& queries);
};

}  // namespace velmora
