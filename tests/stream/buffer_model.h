#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tam/stream/seek_mode.h>
#include <tests/support/chain.h>

namespace tam::test {

/// What the kinds of buffers do in their own ways.
struct Buffer_rules {
    enum Writing { GROWS, FIXED_SIZE, REFUSED };

    Writing writing = GROWS;
    bool empty_read_is_the_end = false;       ///< a read of 0 bytes inside the data reports TAM_E_END_OF_DATA
    bool clears_the_status = true;            ///< read and write clear the status that they are given
    bool other_modes_count_as_current = true; ///< of seek; else TAM_E_POSITION_OUT_OF_RANGE
    unsigned int block_size = 4096;           ///< positions and counts around its multiples are tried most
    unsigned long long largest = 100'000;     ///< where positions end, but for those of seek
};

/// A buffer as a vector of bytes: what a buffer that follows these rules has to do.
class Buffer_model {
public:
    using Bytes = std::vector<unsigned char>;

    explicit Buffer_model(const Buffer_rules& rules, Bytes data = {}) : m_rules(rules), m_data(std::move(data)) {}

    const Buffer_rules& rules() const { return m_rules; }
    unsigned long long length() const { return m_data.size(); }

    /// These three take and leave the status as its chain().
    Bytes read(unsigned long long& position, unsigned int count, std::wstring& status) const
    {
        _start(status);
        const auto first = std::min(position, length());
        const auto done = std::min<unsigned long long>(count, length() - first);
        if (position >= length() || (done == 0 && m_rules.empty_read_is_the_end)) {
            status = L"C2000019";
            return {};
        }
        position += done;
        return {_at(first), _at(first + done)};
    }

    void write(unsigned long long& position, const Bytes& bytes, std::wstring& status)
    {
        _start(status);
        if (m_rules.writing == Buffer_rules::REFUSED) {
            status = L"C200001A";
        } else if (m_rules.writing == Buffer_rules::FIXED_SIZE && position >= length()) {
            status = L"C2000019";
        } else if (m_rules.writing == Buffer_rules::FIXED_SIZE && position + bytes.size() > length()) {
            status = L"C200001A C2000069";
        } else if (!bytes.empty()) {
            m_data.resize(std::max<std::size_t>(m_data.size(), static_cast<std::size_t>(position) + bytes.size()));
            std::copy(bytes.begin(), bytes.end(), m_data.begin() + static_cast<std::ptrdiff_t>(position));
            position += bytes.size();
        }
    }

    void seek(unsigned int mode, int offset, unsigned long long& position, std::wstring& status) const
    {
        status.clear();
        const unsigned long long base = mode == TAM_SEEK_START ? 0 : mode == TAM_SEEK_END ? length() : position;
        const long long sought = static_cast<long long>(base) + offset;
        if (sought < 0 || (mode > TAM_SEEK_END && !m_rules.other_modes_count_as_current)) {
            status = L"C2000018";
        } else {
            position = static_cast<unsigned long long>(sought);
        }
    }

private:
    Bytes::const_iterator _at(unsigned long long position) const
    {
        return m_data.begin() + static_cast<std::ptrdiff_t>(position);
    }
    void _start(std::wstring& status) const
    {
        if (m_rules.clears_the_status) {
            status.clear();
        }
    }

    const Buffer_rules m_rules;
    Bytes m_data;
};

/// Does the same random reads, writes and seeks on a buffer and its model, which hold the same bytes, and expects the
/// same bytes, positions, lengths and statuses. Stops at the first difference. read and write of Buffer are public.
template <class Buffer>
class Buffer_walk {
public:
    Buffer_walk(Buffer& buffer, Buffer_model& model, unsigned int seed = std::random_device{}())
        : m_buffer(buffer), m_model(model), m_seed(seed), m_random(seed)
    {}

    void run(unsigned int steps)
    {
        for (unsigned int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE(testing::Message() << "seed " << m_seed << ", step " << step << ", position " << m_position
                                            << ", length " << m_model.length());
            m_status = _pick(2) == 0 ? 5U : 0U;
            m_expected_status = chain(m_status);
            m_expected_position = m_position;
            switch (_pick(4)) {
            case 0:
                _read();
                break;
            case 1:
                _write();
                break;
            case 2:
                _seek();
                break;
            default:
                m_position = m_expected_position = _somewhere();
                continue;
            }
            EXPECT_EQ(chain(m_status), m_expected_status);
            EXPECT_EQ(m_position, m_expected_position);
        }
        SCOPED_TRACE(testing::Message() << "seed " << m_seed << ", at the end");
        for (m_position = m_expected_position = 0; m_position < m_model.length() && !testing::Test::HasFailure();) {
            _read();
        }
    }

private:
    void _read()
    {
        const unsigned int count = _count();
        SCOPED_TRACE(testing::Message() << "read " << count);
        Buffer_model::Bytes bytes(count + GUARD, 0xEE);
        const unsigned int done = m_buffer.read(false, m_position, count, bytes.data(), m_status);
        const Buffer_model::Bytes expected = m_model.read(m_expected_position, count, m_expected_status);
        ASSERT_EQ(done, expected.size());
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), bytes.begin()));
        EXPECT_TRUE(std::all_of(bytes.begin() + done, bytes.end(), [](unsigned char byte) { return byte == 0xEE; }));
    }

    void _write()
    {
        const auto& rules = m_model.rules();
        Buffer_model::Bytes bytes(_count());
        if (rules.writing == Buffer_rules::GROWS) {
            bytes.resize(std::min<std::size_t>(bytes.size(), static_cast<std::size_t>(rules.largest - m_position)));
        }
        SCOPED_TRACE(testing::Message() << "write " << bytes.size());
        std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<unsigned char>(m_random()); });
        m_buffer.write(m_position, static_cast<unsigned int>(bytes.size()), bytes.data(), m_status);
        m_model.write(m_expected_position, bytes, m_expected_status);
    }

    void _seek()
    {
        constexpr unsigned int modes[] = {0, 1, 2, 1, 2, 7};
        const unsigned int mode = modes[_pick(std::size(modes))];
        int offset = static_cast<int>(_somewhere()) * (_pick(2) == 0 ? 1 : -1);
        if (_pick(8) == 0) {
            constexpr int extremes[] = {-2147483647 - 1, 2147483647, 0};
            offset = extremes[_pick(std::size(extremes))];
        }
        SCOPED_TRACE(testing::Message() << "seek " << mode << ", " << offset);
        m_buffer.seek(static_cast<Tam_seek_mode>(mode), offset, m_position, m_status);
        m_model.seek(mode, offset, m_expected_position, m_expected_status);
        if (m_expected_position > m_model.rules().largest) {
            EXPECT_EQ(m_position, m_expected_position);
            m_position = m_expected_position = _somewhere(); // no writes there
        }
    }

    unsigned int _pick(std::size_t choices) { return static_cast<unsigned int>(m_random() % choices); }

    // Every second time near a block's border.
    unsigned long long _somewhere()
    {
        const unsigned long long anywhere = m_random() % (m_model.rules().largest + 1);
        if (_pick(2) == 0) {
            return anywhere;
        }
        const unsigned long long border = anywhere / m_model.rules().block_size * m_model.rules().block_size;
        return std::min(m_model.rules().largest, border + _pick(3) - (border == 0 ? 0 : 1));
    }

    unsigned int _count()
    {
        switch (_pick(8)) {
        case 0:
            return _pick(2);
        case 1: { // up to a block's border, or one byte off
            const auto offset = static_cast<unsigned int>(m_position % m_model.rules().block_size);
            return m_model.rules().block_size - offset + _pick(3) - 1;
        }
        case 2:
            return _pick(5 * m_model.rules().block_size);
        default:
            return _pick(300);
        }
    }

    static constexpr unsigned int GUARD = 8; // bytes behind a read's destination that must stay

    Buffer& m_buffer;
    Buffer_model& m_model;
    const unsigned int m_seed;
    std::mt19937 m_random;
    Tam_status m_status;
    std::wstring m_expected_status;
    unsigned long long m_position = 0;
    unsigned long long m_expected_position = 0;
};

} // namespace tam::test
