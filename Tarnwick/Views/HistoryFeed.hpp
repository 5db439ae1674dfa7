#pragma once

#include "History/HistoryStore.hpp"

#include <QObject>

namespace tarnwick {

// The app's one history as the views see it: the store the app opened (null when it could
// not), and a signal on the main thread after every change to it, this process's saves and
// the command line's or another app's that the app's watch finds. No view opens a store or
// looks at its files for itself. The feed goes before the store, and waits for the work off
// the main thread that may still read it.
class HistoryFeed : public QObject {
    Q_OBJECT

public:
    explicit HistoryFeed(HistoryStore* store, QObject* parent = nullptr);
    ~HistoryFeed() override;

    [[nodiscard]] HistoryStore* store() const { return m_store; }

Q_SIGNALS:
    void changed();

private:
    HistoryStore* m_store;
    HistoryStore::ObserverID m_observer = 0;
};

}
