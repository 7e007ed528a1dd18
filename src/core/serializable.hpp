#pragma once

#include <iosfwd>
#include <memory>
#include <typeinfo>

namespace vorlen {

/// A small owned, copyable holder of one leaf value, handed to a stream's format object so it can
/// decorate the value's text by kind.
class serializable_t {
public:
    struct instance_t {
        virtual ~instance_t() = default;
        virtual instance_t* clone() const = 0;
        virtual void serialize(std::ostream& stream) const = 0;
        virtual const std::type_info& type_info() const noexcept = 0;
    };

    template <typename T>
    struct instance final : instance_t {
        explicit instance(const T& x) : value(x) {}
        instance_t* clone() const override { return new instance(value); }
        void serialize(std::ostream& stream) const override;
        const std::type_info& type_info() const noexcept override { return typeid(T); }
        T value;
    };

    template <typename T>
    explicit serializable_t(const T& x) : instance_m(new instance<T>(x)) {}
    serializable_t(const serializable_t& x) : instance_m(x.instance_m->clone()) {}
    serializable_t(serializable_t&&) noexcept = default;
    serializable_t& operator=(serializable_t x) noexcept {
        instance_m.swap(x.instance_m);
        return *this;
    }

    /// The plain text of the value.
    void serialize(std::ostream& stream) const { instance_m->serialize(stream); }
    const std::type_info& type_info() const noexcept { return instance_m->type_info(); }

    /// The value when it is of type T, else null.
    template <typename T>
    const T* get_if() const noexcept {
        auto* typed = dynamic_cast<const instance<T>*>(instance_m.get());
        return typed ? &typed->value : nullptr;
    }

private:
    std::unique_ptr<instance_t> instance_m;
};

} // namespace vorlen
