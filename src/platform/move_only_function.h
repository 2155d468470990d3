#pragma once

#include <functional>

#ifndef __cpp_lib_move_only_function
#include <memory>
#include <type_traits>
#include <utility>
#endif

namespace orvanta {

#ifdef __cpp_lib_move_only_function

template <typename Signature>
using MoveOnlyFunction = std::move_only_function<Signature>;

#else

template <typename Signature>
class MoveOnlyFunction;

/// What the program uses of std::move_only_function, for a standard library that does not have it yet: libc++ has not.
template <typename Result, typename... Arguments>
class MoveOnlyFunction<Result(Arguments...)> {
public:
    MoveOnlyFunction() = default;
    MoveOnlyFunction(std::nullptr_t) { } // NOLINT(google-explicit-constructor): as the standard's
    template <typename Function>
        requires(
            !std::is_same_v<std::remove_cvref_t<Function>, MoveOnlyFunction> && std::is_invocable_r_v<Result, std::decay_t<Function>&, Arguments...>)
    MoveOnlyFunction(Function&& function) // NOLINT(google-explicit-constructor,bugprone-forwarding-reference-overload): as the standard's
    {
        if constexpr (requires { static_cast<bool>(function == nullptr); }) {
            if (function == nullptr)
                return;
        }
        m_target = std::make_unique<Holder<std::decay_t<Function>>>(std::forward<Function>(function));
    }

    MoveOnlyFunction(MoveOnlyFunction&&) noexcept = default;
    MoveOnlyFunction& operator=(MoveOnlyFunction&&) noexcept = default;

    Result operator()(Arguments... arguments) { return m_target->call(std::forward<Arguments>(arguments)...); }

    explicit operator bool() const { return m_target != nullptr; }
    friend bool operator==(const MoveOnlyFunction& function, std::nullptr_t) { return !function; }

private:
    struct Target {
        virtual ~Target() = default;
        virtual Result call(Arguments... arguments) = 0;
    };

    template <typename Function>
    struct Holder : Target {
        template <typename Given>
        explicit Holder(Given&& given) : function(std::forward<Given>(given))
        {
        }
        Result call(Arguments... arguments) override { return std::invoke_r<Result>(function, std::forward<Arguments>(arguments)...); }
        Function function;
    };

    std::unique_ptr<Target> m_target;
};

#endif

} // namespace orvanta
