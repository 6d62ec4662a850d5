// One control of a window as plain data: what a person would see and do, without a widget. The
// program reads and writes its fields; a face (window, control socket, test) calls the verbs named
// for what a person does, and they run the handlers that the program has put in; a control that is
// not enabled ignores them. on_change and on_choose run whoever moved the control.
// Controls are owned by their Form and never move. A caption, a text or a row may hold any bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

class ControlRegistry;
class ControlVisitor;

enum class Page { stats, view, upload, download, search, configuration, hosts, window, form };
std::string_view page_name(Page page);

// What every control has. `page` tells where a person would look for it: one of the seven pages,
// `window` for what is always there, `form` for the small windows.
class Control {
 public:
  Control(ControlRegistry& form, std::string name, Page page, std::string caption,
          std::string tooltip);
  virtual ~Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] Page page() const { return page_; }
  [[nodiscard]] const std::string& caption() const { return caption_; }
  // Before a face shows it: a caption is not watched.
  void set_caption(std::string caption) { caption_ = std::move(caption); }
  [[nodiscard]] const std::string& tooltip() const { return tooltip_; }
  [[nodiscard]] bool enabled() const { return enabled_; }
  [[nodiscard]] bool visible() const { return visible_; }
  void set_enabled(bool enabled);
  void set_visible(bool visible);

  virtual void accept(ControlVisitor& visitor) = 0;

 protected:
  void changed();  // tells the form's watchers

 private:
  ControlRegistry& form_;
  std::string name_;
  Page page_;
  std::string caption_;
  std::string tooltip_;
  bool enabled_ = true;
  bool visible_ = true;
};

using Handler = std::function<void()>;

class TextField : public Control {
 public:
  TextField(ControlRegistry& form, std::string name, Page page, std::string caption,
            std::string tooltip, std::string text = {}, bool multi_line = false);
  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] bool multi_line() const { return multi_line_; }
  void set_text(std::string text);
  void enter(std::string text);  // typed, then the Enter key
  void accept(ControlVisitor& visitor) override;

  Handler on_enter;

 private:
  std::string text_;
  bool multi_line_;
};

class CheckBox : public Control {
 public:
  CheckBox(ControlRegistry& form, std::string name, Page page, std::string caption,
           std::string tooltip, bool checked = false);
  [[nodiscard]] bool checked() const { return checked_; }
  void set_checked(bool checked);
  void click();  // toggles
  void mouse_move(int x);
  void accept(ControlVisitor& visitor) override;

  Handler on_change;
  // The hidden box that receives the notification area's messages as mouse moves hears the message
  // number as `x`.
  std::function<void(int x)> on_mouse_move;

 private:
  bool checked_;
};

// A row of option buttons or page buttons of which one is chosen; `first` is the number of the
// first, the captions give how many there are.
class OptionGroup : public Control {
 public:
  OptionGroup(ControlRegistry& form, std::string name, Page page, std::string caption,
              std::string tooltip, std::vector<std::string> options, int first, int chosen);
  [[nodiscard]] int chosen() const { return chosen_; }
  [[nodiscard]] int first() const { return first_; }
  [[nodiscard]] int last() const { return first_ + static_cast<int>(options_.size()) - 1; }
  [[nodiscard]] const std::vector<std::string>& options() const { return options_; }
  [[nodiscard]] const std::string& option(int number) const;  // outside: as choose()
  void choose(int number);  // outside first() to last(): "Subscript out of range"
  void accept(ControlVisitor& visitor) override;

  Handler on_choose;

 private:
  std::vector<std::string> options_;
  int first_;
  int chosen_;
};

// A slider or a scroll bar. `position` keeps within its range: a value outside moves to the end.
class Slider : public Control {
 public:
  Slider(ControlRegistry& form, std::string name, Page page, std::string caption,
         std::string tooltip, std::int32_t minimum, std::int32_t maximum, std::int32_t position);
  [[nodiscard]] std::int32_t minimum() const { return minimum_; }
  [[nodiscard]] std::int32_t maximum() const { return maximum_; }
  [[nodiscard]] std::int32_t position() const { return position_; }
  void set_position(std::int32_t position);
  void accept(ControlVisitor& visitor) override;

  Handler on_change;

 private:
  std::int32_t minimum_;
  std::int32_t maximum_;
  std::int32_t position_;
};

// A label shows a text; a few react to a click (or, as a person does it, a double click).
class Label : public Control {
 public:
  Label(ControlRegistry& form, std::string name, Page page, std::string caption,
        std::string tooltip, std::string text = {});
  [[nodiscard]] const std::string& text() const { return text_; }
  void set_text(std::string text);
  void click();
  void accept(ControlVisitor& visitor) override;

  Handler on_click;

 private:
  std::string text_;
};

// A drop-down list with an edit field: Enter offers the text to the program, Delete a selected row.
class ComboList : public Control {
 public:
  ComboList(ControlRegistry& form, std::string name, Page page, std::string caption,
            std::string tooltip);
  [[nodiscard]] const std::vector<std::string>& items() const { return items_; }
  [[nodiscard]] const std::string& text() const { return text_; }
  void set_text(std::string text);
  void add(std::string item);         // beyond 100,000 items: "Out of memory"
  void remove_item(std::size_t row);  // rows count from 1; outside: "Subscript out of range"
  void clear();
  void enter(std::string text);        // typed, then the Enter key
  void press_delete(std::size_t row);  // the Delete key on a selected row
  void accept(ControlVisitor& visitor) override;

  Handler on_enter;
  std::function<void(std::size_t row)> on_delete;

 private:
  std::vector<std::string> items_;
  std::string text_;
};

// Colours are signed 32-bit values; this one stands for "never chosen".
inline constexpr std::int32_t kButtonFace = static_cast<std::int32_t>(0x8000000FU);

class Button : public Control {
 public:
  Button(ControlRegistry& form, std::string name, Page page, std::string caption,
         std::string tooltip);
  void click();
  [[nodiscard]] std::int32_t back_colour() const { return back_colour_; }
  void set_back_colour(std::int32_t colour);
  void accept(ControlVisitor& visitor) override;

  Handler on_click;

 private:
  std::int32_t back_colour_ = kButtonFace;
};

// A picture that notices the mouse moving over it.
class Picture : public Control {
 public:
  Picture(ControlRegistry& form, std::string name, Page page, std::string caption,
          std::string tooltip, bool visible);
  void move_over();  // nothing while it is hidden
  void accept(ControlVisitor& visitor) override;

  Handler on_move;
};

class MenuItem : public Control {
 public:
  MenuItem(ControlRegistry& form, std::string name, std::string caption);
  void click();
  void accept(ControlVisitor& visitor) override;

  Handler on_click;
};

// A window: shown or hidden; it belongs to no page. Small windows that are nothing but a text show
// it here.
class Window : public Control {
 public:
  Window(ControlRegistry& form, std::string name, std::string caption, std::string tooltip,
         bool shown, bool has_text = false);
  [[nodiscard]] bool shown() const { return visible(); }
  void show();  // tells the watchers even when it is shown already: it is wanted in front
  void hide() { set_visible(false); }
  [[nodiscard]] bool has_text() const { return has_text_; }
  [[nodiscard]] const std::string& text() const { return text_; }
  void set_text(std::string text);
  void append_text(std::string_view text);  // behind what is there, which is not copied
  void accept(ControlVisitor& visitor) override;

 private:
  bool has_text_;
  std::string text_;
};

// Panels with a text each. The first has what was last said; a note in it is for the moment only,
// and a face with a clock drops it after some seconds.
class StatusBar : public Control {
 public:
  StatusBar(ControlRegistry& form, std::string name, std::size_t panels);
  [[nodiscard]] std::size_t panels() const { return texts_.size(); }
  [[nodiscard]] const std::string& panel(std::size_t number) const;  // from 1
  void set_panel(std::size_t number, std::string text);
  void set_note(std::string text);  // into panel 1
  void drop_note();                 // if that is what panel 1 still has
  // How often something was said in panel 1: the same text, said again, is fresh again.
  [[nodiscard]] std::uint64_t times_said() const { return times_said_; }
  void accept(ControlVisitor& visitor) override;

 private:
  std::vector<std::string> texts_;
  std::uint64_t times_said_ = 0;
  bool has_note_ = false;
};

// How far a long work is, such as a scan: a text while it runs, and counts where they are known. It
// is visible while it runs.
class Progress : public Control {
 public:
  Progress(ControlRegistry& form, std::string name, Page page, std::string caption,
           std::string tooltip);
  [[nodiscard]] bool running() const { return visible(); }
  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] std::size_t done() const { return done_; }
  [[nodiscard]] std::size_t total() const { return total_; }  // 0: not known
  void show(std::string text, std::size_t done, std::size_t total);
  void finish();
  void accept(ControlVisitor& visitor) override;

 private:
  std::string text_;
  std::size_t done_ = 0;
  std::size_t total_ = 0;
};

// How far the transfer behind a row is, in bytes; running while bytes move or could move.
struct RowProgress {
  double done = 0;
  double total = 0;
  bool running = false;
};

// Where a list view finds its cells: a view over the program's array. Rows and columns count
// from 1.
class ListSource {
 public:
  virtual ~ListSource() = default;
  // What the row is about: stays with its entry when rows before it come or go, so that a selection
  // can follow it. The row's number where rows never move.
  [[nodiscard]] virtual std::string row_key(std::size_t row) const;
  // Nothing where rows are no transfers.
  [[nodiscard]] virtual std::optional<RowProgress> progress(std::size_t row) const;
  [[nodiscard]] virtual std::size_t rows() const = 0;
  [[nodiscard]] virtual std::string cell(std::size_t row, std::size_t column) const = 0;
  [[nodiscard]] virtual std::string cell_tooltip(std::size_t row, std::size_t column) const;
};

// A list with columns. It holds no cells: it asks its source (not owned) when it is looked at. How
// many rows it shows is its own and moves only by redraw(). The selection is of an entry, not of a
// place: it goes with its row_key() wherever the source puts it, and ends with it.
class ListView : public Control {
 public:
  ListView(ControlRegistry& form, std::string name, Page page, std::string caption,
           std::string tooltip, std::vector<std::string> columns);
  [[nodiscard]] const std::vector<std::string>& columns() const { return columns_; }
  [[nodiscard]] std::size_t rows() const { return shown_rows_; }
  [[nodiscard]] std::size_t selected() const;                       // 0: none
  [[nodiscard]] std::uint64_t version() const { return version_; }  // grows with every redraw
  [[nodiscard]] std::string cell(std::size_t row, std::size_t column) const;
  [[nodiscard]] std::string cell_tooltip(std::size_t row, std::size_t column) const;
  [[nodiscard]] std::string row_key(std::size_t row) const;
  [[nodiscard]] std::optional<RowProgress> progress(std::size_t row) const;
  // Where the entry with that key stands now, 0 when it is gone; until the next redraw that may be
  // below the rows that are shown. The guess is looked at first.
  [[nodiscard]] std::size_t row_of(std::string_view key, std::size_t guess) const;

  void set_source(const ListSource* source) { source_ = source; }
  // Shows the source's rows anew, at most `most` of them.
  void redraw(std::size_t most = static_cast<std::size_t>(-1));
  void select(std::size_t row);    // a click; outside the rows: "Subscript out of range"
  void activate(std::size_t row);  // a double click: selects, then runs on_activate
  void accept(ControlVisitor& visitor) override;

  std::function<void(std::size_t row)> on_activate;

 private:
  void check(std::size_t row) const;
  [[nodiscard]] bool has(std::size_t row) const;  // the source may have lost a shown row

  std::vector<std::string> columns_;
  const ListSource* source_ = nullptr;
  std::size_t shown_rows_ = 0;
  std::size_t selected_ = 0;  // where the selected entry stood at last
  std::string selected_key_;
  std::uint64_t version_ = 0;
};

class ControlVisitor {
 public:
  virtual ~ControlVisitor() = default;
  virtual void visit(TextField& control) = 0;
  virtual void visit(CheckBox& control) = 0;
  virtual void visit(OptionGroup& control) = 0;
  virtual void visit(Slider& control) = 0;
  virtual void visit(Label& control) = 0;
  virtual void visit(ComboList& control) = 0;
  virtual void visit(Button& control) = 0;
  virtual void visit(Picture& control) = 0;
  virtual void visit(MenuItem& control) = 0;
  virtual void visit(Window& control) = 0;
  virtual void visit(StatusBar& control) = 0;
  virtual void visit(Progress& control) = 0;
  virtual void visit(ListView& control) = 0;
};

}  // namespace velmora
