// Host stand-in of <android/binder_interface_utils.h>: SharedRefBase, ICInterface, BnCInterface,
// BpCInterface, with the NDK's behaviour:
// - SharedRefBase::make<T>() is the only way to make an object (operator new is private);
// - a local binder keeps its C++ object alive while anyone holds the binder;
// - BnCInterface::asBinder() keeps a weak reference to its binder and makes a new one only when
//   the old one has gone.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>

namespace ndk {

class SharedRefBase {
public:
    SharedRefBase() {}
    virtual ~SharedRefBase() {
        std::call_once(mFlagThis, [&]() {
            std::fprintf(stderr, "SharedRefBase: no ref created during lifetime\n");
            std::abort();
        });
    }

    std::shared_ptr<SharedRefBase> ref() {
        std::shared_ptr<SharedRefBase> thiz = mThis.lock();
        std::call_once(mFlagThis, [&]() { mThis = thiz = std::shared_ptr<SharedRefBase>(this); });
        return thiz;
    }

    template <typename CHILD>
    std::shared_ptr<CHILD> ref() {
        return std::static_pointer_cast<CHILD>(ref());
    }

    template <class T, class... Args>
    static std::shared_ptr<T> make(Args&&... args) {
        T* t = new T(std::forward<Args>(args)...);
        return t->template ref<T>();
    }

    static void operator delete(void* p) { std::free(p); }

private:
    std::once_flag mFlagThis;
    std::weak_ptr<SharedRefBase> mThis;

    static void* operator new(size_t s) { return std::malloc(s); }
};

class ICInterface : public SharedRefBase {
public:
    ICInterface() {}
    virtual ~ICInterface() {}

    virtual SpAIBinder asBinder() = 0;
    virtual bool isRemote() = 0;
    virtual binder_status_t dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) {
        return STATUS_OK;
    }

    static std::shared_ptr<ICInterface> asInterface(AIBinder* binder);

    static AIBinder_Class* defineClass(const char* interfaceDescriptor,
                                       AIBinder_Class_onTransact onTransact);

private:
    class ICInterfaceData {
    public:
        std::shared_ptr<ICInterface> interface;
        static std::shared_ptr<ICInterface> getInterface(AIBinder* binder);
        static void* onCreate(void* args);
        static void onDestroy(void* userData);
        static binder_status_t onDump(AIBinder* binder, int fd, const char** args,
                                      uint32_t numArgs);
    };
};

template <typename INTERFACE>
class BnCInterface : public INTERFACE {
public:
    BnCInterface() {}
    virtual ~BnCInterface() {}

    SpAIBinder asBinder() override;
    bool isRemote() override { return false; }

protected:
    virtual SpAIBinder createBinder() = 0;

private:
    std::mutex mMutex;
    ScopedAIBinder_Weak mWeakBinder;
};

template <typename INTERFACE>
class BpCInterface : public INTERFACE {
public:
    explicit BpCInterface(const SpAIBinder& binder) : mBinder(binder) {}
    virtual ~BpCInterface() {}

    SpAIBinder asBinder() override { return mBinder; }
    bool isRemote() override { return AIBinder_isRemote(mBinder.get()); }
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        return AIBinder_dump(asBinder().get(), fd, args, numArgs);
    }

private:
    SpAIBinder mBinder;
};

inline std::shared_ptr<ICInterface> ICInterface::asInterface(AIBinder* binder) {
    return ICInterfaceData::getInterface(binder);
}

inline AIBinder_Class* ICInterface::defineClass(const char* interfaceDescriptor,
                                                AIBinder_Class_onTransact onTransact) {
    AIBinder_Class* clazz = AIBinder_Class_define(interfaceDescriptor, ICInterfaceData::onCreate,
                                                  ICInterfaceData::onDestroy, onTransact);
    if (clazz == nullptr) return nullptr;
    AIBinder_Class_setOnDump(clazz, ICInterfaceData::onDump);
    return clazz;
}

inline std::shared_ptr<ICInterface> ICInterface::ICInterfaceData::getInterface(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    void* userData = AIBinder_getUserData(binder);
    if (userData == nullptr) return nullptr;
    return static_cast<ICInterfaceData*>(userData)->interface;
}

inline void* ICInterface::ICInterfaceData::onCreate(void* args) {
    std::shared_ptr<ICInterface> interface = static_cast<ICInterface*>(args)->ref<ICInterface>();
    ICInterfaceData* data = new ICInterfaceData{interface};
    return static_cast<void*>(data);
}

inline void ICInterface::ICInterfaceData::onDestroy(void* userData) {
    delete static_cast<ICInterfaceData*>(userData);
}

inline binder_status_t ICInterface::ICInterfaceData::onDump(AIBinder* binder, int fd,
                                                            const char** args, uint32_t numArgs) {
    std::shared_ptr<ICInterface> interface = getInterface(binder);
    if (interface != nullptr) return interface->dump(fd, args, numArgs);
    return STATUS_DEAD_OBJECT;
}

template <typename INTERFACE>
SpAIBinder BnCInterface<INTERFACE>::asBinder() {
    std::lock_guard<std::mutex> l(mMutex);
    SpAIBinder binder;
    if (mWeakBinder.get() != nullptr) {
        binder.set(AIBinder_Weak_promote(mWeakBinder.get()));
    }
    if (binder.get() == nullptr) {
        binder = createBinder();
        mWeakBinder.set(AIBinder_Weak_new(binder.get()));
    }
    return binder;
}

}  // namespace ndk
