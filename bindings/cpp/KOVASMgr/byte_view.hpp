// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BYTE_VIEW_HPP
#define KOVASMGR_BYTE_VIEW_HPP

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kovasmgr {
inline namespace v1 {

/// Bytes that somebody else owns; valid for as long as their owner says. Cheap to copy.
///
/// Made of texts ("AT\r", std::string, std::string_view; without a terminator) and of contiguous
/// containers of one-byte elements (std::vector<std::byte>, std::array<uint8_t, 8> ...).
class ByteView {
    template <typename T>
    static constexpr bool kIsText = std::is_convertible_v<const T&, std::string_view>;
    template <typename T>
    using Element = std::remove_reference_t<decltype(*std::data(std::declval<const T&>()))>;

  public:
    constexpr ByteView() = default;

    /// @param data  may be null when size is 0
    ByteView(const void* data, std::size_t size)
        : m_Data(static_cast<const std::byte*>(data)), m_Size(size) {}

    template <typename Text, std::enable_if_t<kIsText<Text>, int> = 0>
    ByteView(const Text& text)
        : ByteView(std::string_view(text).data(), std::string_view(text).size()) {}

    template <typename Bytes, typename E = Element<Bytes>,
              std::enable_if_t<!kIsText<Bytes> && sizeof(E) == 1 && std::is_trivially_copyable_v<E>,
                               int> = 0>
    ByteView(const Bytes& bytes) : ByteView(std::data(bytes), std::size(bytes)) {}

    const std::byte* data() const { return m_Data; }
    std::size_t size() const { return m_Size; }
    bool empty() const { return m_Size == 0; }
    const std::byte* begin() const { return m_Data; }
    const std::byte* end() const { return m_Data + m_Size; }
    std::byte operator[](std::size_t index) const { return m_Data[index]; }

    /// The part from offset on, at most count bytes; empty beyond the end.
    ByteView Part(std::size_t offset, std::size_t count = static_cast<std::size_t>(-1)) const {
        const std::size_t from = std::min(offset, m_Size);
        return {m_Data + from, std::min(count, m_Size - from)};
    }

    /// The same bytes as characters.
    std::string_view Text() const { return {reinterpret_cast<const char*>(m_Data), m_Size}; }

  private:
    const std::byte* m_Data = nullptr;
    std::size_t m_Size = 0;
};

} // namespace v1
} // namespace kovasmgr

#endif
