#include "LumoUI/store/UndoCenter.h"

namespace lumo {

UndoCenter::UndoCenter(QObject* parent) : QObject(parent) {}

void UndoCenter::setAvailability(bool canUndo, bool canRedo) {
    if (canUndo != m_canUndo) {
        m_canUndo = canUndo;
        emit canUndoChanged(canUndo);
    }
    if (canRedo != m_canRedo) {
        m_canRedo = canRedo;
        emit canRedoChanged(canRedo);
    }
}

} // namespace lumo
