#include "transfer/search_commands.h"

namespace velmora {

SearchCommands::SearchCommands(Form& form, QuerySender& queries) {
  form.start_search.on_click = [&form, &queries] {
    queries.send_query(form.Tsearch.text());
    form.stop_search.set_checked(false);
  };
  form.Tsearch.on_enter = [&form, &queries] {
    form.stop_search.set_checked(false);
    queries.send_query(form.Tsearch.text());
  };
}

}  // namespace velmora
