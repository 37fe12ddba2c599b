#include "synthesizer.h"

#include "tagcodes.h"

using namespace ZAT16;

namespace {

// How often each kind of tag starts: a request with its answer makes two tags.
struct Weight {
    int type;
    int weight;
};
const Weight weights[] = {
    { Integer, 26 }, { Bool, 9 },     { String, 10 },        { Binary, 5 },  { Date, 3 },     { Time, 3 },
    { DateTime, 4 }, { BitArray, 6 }, { NetworkAddress, 2 }, { List, 3 },    { Request, 12 }, { Answer, 1 },
    { Message, 5 },  { ExtPoint, 1 }, { ExtRect, 1 },        { ExtSize, 1 },
};

const char *const nouns[32] = {
    "Battery", "Motor",   "Pump",  "Valve",  "Sensor", "Heater", "Fan",     "Door",    "Light",  "Clock",   "Alarm",
    "Relay",   "Channel", "Port",  "Buffer", "Filter", "Timer",  "Counter", "Display", "Switch", "Charger", "Cell",
    "Module",  "Link",    "Frame", "Zone",   "Tank",   "Brake",  "Wheel",   "Gear",    "Lamp",   "Meter",
};

const char *const quantities[32] = {
    "Voltage",  "Current",  "Speed",   "Pressure",  "Temperature", "Level",  "State", "Mode",
    "Status",   "Count",    "Limit",   "Offset",    "Gain",        "Error",  "Flags", "Config",
    "Address",  "Interval", "Timeout", "Threshold", "Version",     "Serial", "Label", "Power",
    "Position", "Torque",   "Flow",    "Load",      "Period",      "Duty",   "Phase", "Range",
};

const char *const states[32] = {
    "Off",      "On",      "Idle",   "Ready",  "Busy",  "Fault",   "Low",    "High",   "Normal",  "Fast",    "Slow",
    "Open",     "Closed",  "Locked", "Manual", "Auto",  "Standby", "Active", "Paused", "Stopped", "Running", "Warning",
    "Critical", "Unknown", "Reset",  "Init",   "Sleep", "Wake",    "Boost",  "Eco",    "Test",    "Service",
};

// Second words for the values past the 32nd of a long list.
const char *const stages[2] = { "Stage", "Step" };

const char *const bitSuffixes[6] = { "Enabled", "Fault", "Ready", "Present", "Request", "Lock" };

// "0.1 °C" is split in two literals so that the hex escape ends before the C; the parentheses say
// that the two make one element.
const char *const units[8] = { "mV",
                               "mA",
                               "rpm",
                               "0.1 hPa",
                               ("0.1 \xC2\xB0"
                                "C"),
                               "percent",
                               "ms",
                               "steps" };

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

} // namespace

Synthesizer::Synthesizer(int tags)
    : m_state(0x2A7160000000ULL + quint64(tags))
    , m_tags(tags)
{
    m_out.reserve(qsizetype(tags) * 760 + 4096);
}

QByteArray Synthesizer::definitions(int tags)
{
    Synthesizer synth(tags);
    synth.m_out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!-- -*- nxml -*- -->\n<zat16>";
    while (synth.m_written < tags)
        synth.writeSection(synth.m_written);
    synth.m_out += "\n</zat16>\n";
    synth.m_out.squeeze();
    return synth.m_out;
}

quint64 Synthesizer::next()
{
    quint64 z = (m_state += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

int Synthesizer::range(int low, int high)
{
    return low + int(next() % quint64(high - low + 1));
}

bool Synthesizer::chance(int percent)
{
    return range(0, 99) < percent;
}

void Synthesizer::appendEscaped(const char *text)
{
    for (const char *c = text; *c; ++c) {
        switch (*c) {
        case '<':
            m_out += "&lt;";
            break;
        case '>':
            m_out += "&gt;";
            break;
        case '&':
            m_out += "&amp;";
            break;
        case '"':
            m_out += "&quot;";
            break;
        default:
            m_out += *c;
            break;
        }
    }
}

void Synthesizer::writeSection(int first)
{
    const char *noun = nouns[range(0, 31)];
    // Row 0 is a tag (the editor measurement edits its code); later sections open with a blank
    // line and a comment.
    if (first != 0) {
        m_out += "\n\n  <!-- ";
        m_out += noun;
        m_out += chance(50) ? " control and readings -->" : " settings -->";
    }
    const int count = range(4, 16);
    for (int i = 0; i < count && m_written < m_tags; ++i) {
        int pick = range(0, 96);
        int type = Integer;
        for (const Weight &w : weights) {
            if (pick < w.weight) {
                type = w.type;
                break;
            }
            pick -= w.weight;
        }
        if (i == 0 && first == 0)
            type = Integer;

        const bool extended = type >= 0x80;
        quint32 code;
        if (type == Request || type == Answer) {
            code = (quint32(type) << 12) | (++m_requestNumber & 0xFFF);
        } else if (extended) {
            code = (quint32(type) << 8) | (++m_numbers[type] & 0xFF);
        } else {
            code = (quint32(type) << 12) | (++m_numbers[type] & 0xFFF);
        }

        const char *part = i == 0 ? noun : nouns[range(0, 31)];
        const char *quantity = quantities[range(0, 31)];
        const int instance = m_written;
        QByteArray name;
        switch (type) {
        case Request:
            name = QByteArray("Get") + part + quantity + QByteArray::number(instance);
            break;
        case Answer:
            name = QByteArray(part) + quantity + "Reply" + QByteArray::number(instance);
            break;
        case Message:
            name = QByteArray(part) + quantity + "Message" + QByteArray::number(instance);
            break;
        case List:
            name = QByteArray(part) + quantity + "List" + QByteArray::number(instance);
            break;
        default:
            name = QByteArray(part) + quantity + QByteArray::number(instance);
            break;
        }

        m_out += "\n  <tag name=\"";
        m_out += name;
        m_out += "\" id=\"0x";
        m_out += QByteArray::number(code, 16).toUpper().rightJustified(4, '0');
        m_out += "\" comment=\"";
        writeTagComment(part, quantity, instance);
        m_out += '"';
        if (chance(5))
            m_out += " secure=\"true\"";
        ++m_written;

        // Requests and lists, answers and messages carry other tags; only plain tags get lists.
        // Plain tags are about 70 % of all, so these chances give a third and a fifth of all.
        const bool nested = type >= List && type <= Message;
        const bool bits = !nested && (type == BitArray ? chance(80) : chance(24));
        const bool enums = !nested && chance(47);
        if (!bits && !enums) {
            m_out += "/>";
        } else {
            m_out += '>';
            // Bit lists stand before enumeration lists in a saved file.
            if (bits)
                writeBits();
            if (enums)
                writeEnums();
            m_out += "\n  </tag>";
        }

        if (type == Request && m_written < m_tags && chance(80)) {
            const quint32 answer = 0xE000 | (code & 0x0FFF);
            m_out += "\n  <tag name=\"";
            m_out += part;
            m_out += quantity;
            m_out += "Reply";
            m_out += QByteArray::number(m_written);
            m_out += "\" id=\"0x";
            m_out += QByteArray::number(answer, 16).toUpper();
            m_out += "\" comment=\"Answer to ";
            m_out += name;
            m_out += "\"/>";
            ++m_written;
        }
    }
}

void Synthesizer::writeTagComment(const char *noun, const char *quantity, int instance)
{
    QByteArray lowerQuantity(quantity);
    for (char &c : lowerQuantity)
        c = lower(c);
    const QByteArray number = QByteArray::number(instance % 97 + 1);
    QByteArray text;
    switch (range(0, 9)) {
    case 0:
        text = "Measured " + lowerQuantity + " of " + noun + " " + number + " in " + units[range(0, 7)];
        break;
    case 1:
        text = "Upper " + lowerQuantity + " limit of " + noun + " " + number + "; 0 switches the check off";
        break;
    case 2:
        text = "Set the " + lowerQuantity + " of " + noun + " " + number + " (applied at once, kept over a restart)";
        break;
    case 3:
        text = QByteArray(quantity) + " & status of the " + noun + " unit " + number;
        break;
    case 4:
        text = QByteArray("Text shown as \"") + noun + " " + lowerQuantity + "\" on the front panel";
        break;
    case 5:
        text = QByteArray(noun) + " " + number + ": " + lowerQuantity + " < threshold raises an alarm";
        break;
    case 6:
        text = QByteArray("Raw ") + lowerQuantity + " of " + noun + " " + number;
        break;
    case 7:
        text = QByteArray(noun) + " " + lowerQuantity + " in " + units[range(0, 7)] + ", averaged over the last second";
        break;
    case 8:
        text = QByteArray(quantity) + " of " + noun + " " + number + " -> written by the service tool";
        break;
    default:
        text = QByteArray(quantity);
        break;
    }
    appendEscaped(text.constData());
}

void Synthesizer::writeEnums()
{
    const int count = range(5, 50);
    // A quarter of the lists choose a display mode; the others show signed decimal.
    const int modePick = range(0, 15);
    const char *display = modePick < 2 ? "x" : modePick == 2 ? "d" : modePick == 3 ? "u" : nullptr;
    m_out += "\n    <enums";
    if (display) {
        m_out += " display=\"";
        m_out += display;
        m_out += '"';
    }
    m_out += '>';

    const int style = range(0, 9);
    // Signed lists may start with -1 for "invalid".
    const bool invalidFirst = (!display || display[0] == 'd') && chance(10);
    qint64 value = style < 6 ? 0 : style < 8 ? 1 : 0x10;
    const int step = style < 8 ? 1 : 0x10;
    const int offset = range(0, 31);
    const int breakAt = count >= 20 && chance(30) ? range(5, count - 5) : -1;
    for (int k = 0; k < count; ++k) {
        if (k == breakAt) {
            m_out += "\n\n      <!-- ";
            m_out += states[(k + offset) % 32];
            m_out += " and above -->";
        }
        m_out += "\n      <enum name=\"";
        if (k == 0 && invalidFirst) {
            m_out += "Invalid";
        } else {
            m_out += states[(k + offset) % 32];
            if (k >= 32)
                m_out += stages[(k - 32) / 32];
        }
        m_out += "\" id=\"";
        const qint64 id = k == 0 && invalidFirst ? -1 : value;
        if (display && display[0] == 'x') {
            m_out += "0x";
            m_out += QByteArray::number(id, 16).toUpper();
        } else {
            m_out += QByteArray::number(id);
        }
        m_out += '"';
        if (chance(40)) {
            m_out += " comment=\"";
            m_out += states[(k + offset) % 32];
            m_out += chance(50) ? " state of the unit" : " (see the service manual)";
            m_out += '"';
        }
        m_out += "/>";
        if (!(k == 0 && invalidFirst))
            value += step;
    }
    m_out += "\n    </enums>";
}

void Synthesizer::writeBits()
{
    const int count = range(1, 32);
    const bool hex = chance(25);
    m_out += hex ? "\n    <bits display=\"x\">" : "\n    <bits>";
    const int offset = range(0, 31);
    const char *suffix = bitSuffixes[range(0, 5)];
    // Some lists leave a gap, with a comment before the upper group of bits.
    const int gapAt = count >= 8 && count <= 24 && chance(30) ? count / 2 : -1;
    int bit = 0;
    for (int k = 0; k < count; ++k) {
        if (k == gapAt) {
            bit += 8 - bit % 8;
            m_out += "\n\n      <!-- ";
            m_out += nouns[(k + offset) % 32];
            m_out += " group -->";
        }
        m_out += "\n      <bit name=\"";
        m_out += nouns[(k + offset) % 32];
        m_out += suffix;
        m_out += "\" id=\"";
        if (hex) {
            m_out += "0x";
            m_out += QByteArray::number(bit, 16).toUpper();
        } else {
            m_out += QByteArray::number(bit);
        }
        m_out += '"';
        if (chance(30)) {
            m_out += " comment=\"Set while the ";
            m_out += nouns[(k + offset) % 32];
            m_out += " is ";
            const char *state = states[range(0, 31)];
            for (const char *c = state; *c; ++c)
                m_out += lower(*c);
            m_out += '"';
        }
        m_out += "/>";
        ++bit;
    }
    m_out += "\n    </bits>";
}
