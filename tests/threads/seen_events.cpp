// ThreadSanitizer does not see how Qt hands an event from one thread to another, as Qt itself is
// not built with it. Here it is told: whatever was done before a signal or a call was handed over
// is seen by whoever is handed an event afterwards. What threads share without any event is a race
// as ever.
#include <QCoreApplication>
#include <gmock/gmock.h>
#include <mutex>
#include <sanitizer/tsan_interface.h>

namespace {

char handedOver; // its address alone is used
// Held while a signal is given: what Qt copies for another thread is copied then.
std::recursive_mutex givingSignal;

class SeenApplication : public QCoreApplication {
public:
    using QCoreApplication::QCoreApplication;
    // In whichever thread the receiver lives.
    bool notify(QObject* receiver, QEvent* event) override
    {
        {
            const std::lock_guard<std::recursive_mutex> given(givingSignal);
        }
        __tsan_acquire(&handedOver);
        const bool isDone = QCoreApplication::notify(receiver, event);
        __tsan_release(&handedOver);
        return isDone;
    }
};

} // namespace

extern "C" {
// QMetaObject::activate() and QMetaObject::invokeMethodImpl(), as the linker hands them over.
void __real__ZN11QMetaObject8activateEP7QObjectPKS_iPPv(QObject*, const QMetaObject*, int, void**);
bool __real__ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv(
    QObject*, QtPrivate::QSlotObjectBase*, Qt::ConnectionType, void*);

void __wrap__ZN11QMetaObject8activateEP7QObjectPKS_iPPv(QObject* sender, const QMetaObject* meta,
                                                        int signal, void** values)
{
    const std::lock_guard<std::recursive_mutex> giving(givingSignal);
    __real__ZN11QMetaObject8activateEP7QObjectPKS_iPPv(sender, meta, signal, values);
}

bool __wrap__ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv(
    QObject* object, QtPrivate::QSlotObjectBase* slot, Qt::ConnectionType type, void* result)
{
    slot->ref(); // let go below, once it is seen that the call has ended
    __tsan_release(&handedOver);
    const bool isCalled =
        __real__ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv(
            object, slot, type, result);
    __tsan_acquire(&handedOver); // blocking, it has waited for the call to end
    slot->destroyIfLastRef();
    return isCalled;
}
}

int main(int argc, char** argv)
{
    SeenApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
