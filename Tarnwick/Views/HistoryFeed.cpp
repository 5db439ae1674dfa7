#include "HistoryFeed.hpp"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

#include <memory>

namespace tarnwick {

HistoryFeed::HistoryFeed(HistoryStore* store, QObject* parent)
    : QObject(parent)
    , m_store(store)
{
    if (!m_store)
        return;
    // The store calls observers on the thread that saved. The pointer to this feed is only
    // read on the main thread, where it is also cleared, so a save racing the window's
    // closing finds nothing to call.
    auto self = std::make_shared<QPointer<HistoryFeed>>(this);
    m_observer = m_store->addObserver([self](HistoryStore&) {
        QMetaObject::invokeMethod(QCoreApplication::instance(), [self] {
            if (HistoryFeed* feed = *self)
                Q_EMIT feed->changed();
        }, Qt::QueuedConnection);
    });
}

HistoryFeed::~HistoryFeed()
{
    if (!m_store)
        return;
    m_store->removeObserver(m_observer);
    // Work the views sent off the main thread may still read the store, which its owner
    // closes once the views are gone.
    QThreadPool::globalInstance()->waitForDone();
}

}
