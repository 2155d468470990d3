#pragma once

#include <random>
#include <string>
#include <vector>

/// JSON of every kind, made up anew for each seed: deep and flat, with white space anywhere, odd numbers and odd texts. A key
/// stands once in an object.
class GeneratedJson {
public:
    explicit GeneratedJson(unsigned seed) : m_random(seed) { }

    int number(int below) { return static_cast<int>(m_random() % static_cast<std::minstd_rand::result_type>(below)); }

    std::string space()
    {
        static const std::vector<std::string> spaces { "", "", "", " ", "\n", "\t", "\r\n  " };
        return pick(spaces);
    }

    std::string text()
    {
        static const std::vector<std::string> parts { "a", "Stop", " ", "\\n", "\\\"", "\\\\", "\\/", "/", "\\u00e4", "\xC3\xA4", "\\ud83d\\udc51",
            "\xF0\x9F\x91\x91", "\\u0000", "hooks", "command", "'", "<b>", "\xE2\x80\xA8" };
        std::string all = "\"";
        for (int count = number(6); count > 0; --count)
            all += pick(parts);
        return all + '"';
    }

    std::string scalar()
    {
        static const std::vector<std::string> scalars { "null", "true", "false", "0", "-0", "1.0", "1e400", "-1E-400", "12345678901234567890",
            "0.1000", "1e5", "-7", "123456789012345678901234567890.5" };
        return number(3) == 0 ? text() : pick(scalars);
    }

    std::string value(int depth)
    {
        if (depth == 0 || number(3) == 0)
            return scalar();
        return number(2) == 0 ? array(depth) : object(depth);
    }

    std::string array(int depth)
    {
        std::string all = "[" + space();
        for (int count = number(4), index = 0; index < count; ++index)
            all += (index > 0 ? "," : "") + space() + value(depth - 1) + space();
        return all + "]";
    }

    std::string object(int depth, const std::vector<std::string>& also = {})
    {
        std::vector<std::string> members = also;
        for (int count = number(5), index = 0; index < count; ++index)
            members.push_back("\"k" + std::to_string(index) + (number(3) == 0 ? "\\u00e9" : "") + "\"" + space() + ":" + space() + value(depth - 1));
        for (std::size_t index = members.size(); index > 1; --index)
            std::swap(members[index - 1], members[static_cast<std::size_t>(number(static_cast<int>(index)))]);
        std::string all = "{" + space();
        for (std::size_t index = 0; index < members.size(); ++index)
            all += (index > 0 ? "," : "") + space() + members[index] + space();
        return all + "}";
    }

    template <typename T>
    const T& pick(const std::vector<T>& values)
    {
        return values[static_cast<std::size_t>(number(static_cast<int>(values.size())))];
    }

private:
    std::minstd_rand m_random;
};
