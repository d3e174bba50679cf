#pragma once

#include "platform/OnDeviceModel.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ombrel {

// The model that every workspace of the studio holds: another one can be put behind it, which new
// sessions then use.
class SwitchableModel final : public OnDeviceModel {
  public:
    void use(std::shared_ptr<OnDeviceModel> model) { m_model = std::move(model); }

    ModelAvailability availability() override { return m_model->availability(); }
    std::shared_ptr<LanguageModelSession>
    makeSession(std::string instructions, std::vector<std::shared_ptr<Tool>> tools) override {
        return m_model->makeSession(std::move(instructions), std::move(tools));
    }

  private:
    std::shared_ptr<OnDeviceModel> m_model;
};

} // namespace ombrel
