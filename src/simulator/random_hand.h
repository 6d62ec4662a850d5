// A person's hand on the form without a purpose: does to a control what its kind allows, with texts
// and numbers that are sometimes sensible. It leaves the folder of downloads and the end of the
// program to others.
#pragma once

#include <string>

#include "form/form.h"
#include "platform/sim/sim_chance.h"

namespace velmora::simulator {

class RandomHand : private ControlVisitor {
 public:
  explicit RandomHand(sim::Chance& chance) : chance_(chance) {}

  // Returns the name of the control that it touched.
  std::string touch(Form& form);

 private:
  std::string text();
  void visit(TextField& control) override;
  void visit(CheckBox& control) override { control.click(); }
  void visit(OptionGroup& control) override;
  void visit(Slider& control) override;
  void visit(Label& control) override { control.click(); }
  void visit(ComboList& control) override;
  void visit(Button& control) override { control.click(); }
  void visit(Picture& control) override { control.move_over(); }
  void visit(MenuItem& control) override { control.click(); }
  void visit(Window& control) override;
  void visit(StatusBar& /*control*/) override {}
  void visit(Progress& /*control*/) override {}
  void visit(ListView& control) override;

  sim::Chance& chance_;
};

}  // namespace velmora::simulator
