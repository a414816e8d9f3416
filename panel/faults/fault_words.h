// Faults of the own controller as people read them: what each does to a reply, and what is to be
// seen at present.
#ifndef DOV417_PANEL_FAULT_WORDS_H
#define DOV417_PANEL_FAULT_WORDS_H

#include <QString>
#include <vector>

#include "panel/desk/panel_desk.h"
#include "simulator/faults.h"

namespace dov417 {

// In the order in which `dov417 simulate --help` names them.
const std::vector<simulator::FaultKind>& faultKinds();

// "no reply"
QString faultEffect(simulator::FaultKind kind);

// What the controller suffers and what comes of it: what is wanted, and how far it has come.
QString faultSentence(const PanelDesk& desk, const simulator::Conditions& wanted);

// What the replies have suffered and what the line has made of it, in numbers; empty while nothing
// is known.
QString faultCounters(const PanelDesk& desk);

} // namespace dov417

#endif
