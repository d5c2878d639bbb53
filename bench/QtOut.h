#pragma once

#include <QObject>

namespace trel::bench {

/// The sending end of a Qt signal.
class QtOut : public QObject {
    Q_OBJECT

public:
    void send(int value) { Q_EMIT sent(value); }

Q_SIGNALS:
    void sent(int value);
};

}  // namespace trel::bench
