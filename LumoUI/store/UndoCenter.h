#pragma once

#include <QObject>

namespace lumo {

/// Whether undo and redo are available for the active window's sheet. Menu commands and the
/// keypad's undo and redo keys bind to it; the document store keeps it current.
class UndoCenter : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY canUndoChanged)
    Q_PROPERTY(bool canRedo READ canRedo NOTIFY canRedoChanged)

public:
    explicit UndoCenter(QObject* parent = nullptr);

    bool canUndo() const { return m_canUndo; }
    bool canRedo() const { return m_canRedo; }

    /// Sets both values; each signal is emitted only when its value changes.
    void setAvailability(bool canUndo, bool canRedo);

signals:
    void canUndoChanged(bool canUndo);
    void canRedoChanged(bool canRedo);

private:
    bool m_canUndo = false;
    bool m_canRedo = false;
};

} // namespace lumo
