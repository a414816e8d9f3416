#include "panel/desk/panel_page.h"

namespace dov417 {

PanelPage::PanelPage(PanelDesk& desk) : desk_(desk) {}

bool PanelPage::isBusy() const
{
    return false;
}

std::string PanelPage::settingsName() const
{
    return {};
}

OrderedJson PanelPage::settings() const
{
    return OrderedJson::object();
}

std::function<void()> PanelPage::prepared(const OrderedJson& /*settings*/)
{
    return []() {};
}

bool PanelPage::settingsAreSteps() const
{
    return true;
}

QUndoStack* PanelPage::ownHistory()
{
    return nullptr;
}

bool PanelPage::mayForget()
{
    return true;
}

bool PanelPage::hasUnsaved() const
{
    return false;
}

OrderedJson PanelPage::unsaved() const
{
    return OrderedJson::object();
}

QString PanelPage::takeUpUnsaved(const OrderedJson& /*unsaved*/)
{
    return {};
}

} // namespace dov417
