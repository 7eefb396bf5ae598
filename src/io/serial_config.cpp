#include <ovo/io/serial_config.h>
#include <ovo/nv_collection.h>
#include <ovo/strings.h>

#include <utility>

namespace ovo {
namespace io {

namespace {

// The key words of the text form: process-wide constants.
const char* const pairSeparator = ";";
const char* const nvSeparator = "=";
const char* const deviceKey = "device";
const char* const baudKey = "baud";
const char* const dataKey = "data";
const char* const parityKey = "parity";
const char* const stopKey = "stop";
const char* const flowKey = "flow";

// The words of values 1 to 3 of an enumeration, at index value - 1.
using Words = const char* const[3];
Words parityWords = {"even", "odd", "none"};
Words stopWords = {"1", "1.5", "2"};
Words flowWords = {"off", "software", "hardware"};
const int firstDataBits = 5; // dataSize5 is 1

void setWord(nvCollection& pairs, const char* key, int value, Words& words)
{
    if (value >= 1 && value <= 3)
        pairs.setString(key, words[value - 1]);
}

// The value of the word, in any case; 0 for any other text.
int wordValue(const std::string& text, Words& words)
{
    for (int i = 0; i < 3; ++i)
        if (icompare(text, words[i]))
            return i + 1;
    return 0;
}

} // namespace

SerialConfig::SerialConfig()
    : baudRate_(0), dataSize_(dataSizeUnset), parity_(parityUnset), stopBits_(stopBitsUnset),
      flowControl_(flowUnset), commTimeouts_(), buffersSize_()
{
}

SerialConfig::SerialConfig(const SerialConfig& other) = default;
SerialConfig::SerialConfig(SerialConfig&& other) noexcept = default;
SerialConfig& SerialConfig::operator=(const SerialConfig& other) = default;
SerialConfig& SerialConfig::operator=(SerialConfig&& other) noexcept = default;
SerialConfig::~SerialConfig() = default;

const std::string& SerialConfig::deviceName() const { return deviceName_; }
void SerialConfig::setDeviceName(const std::string& name) { deviceName_ = name; }
unsigned int SerialConfig::baudRate() const { return baudRate_; }
void SerialConfig::setBaudRate(unsigned int rate) { baudRate_ = rate; }
DataSize SerialConfig::dataSize() const { return dataSize_; }
void SerialConfig::setDataSize(DataSize size) { dataSize_ = size; }
Parity SerialConfig::parity() const { return parity_; }
void SerialConfig::setParity(Parity parity) { parity_ = parity; }
StopBits SerialConfig::stopBits() const { return stopBits_; }
void SerialConfig::setStopBits(StopBits bits) { stopBits_ = bits; }
FlowControl SerialConfig::flowControl() const { return flowControl_; }
void SerialConfig::setFlowControl(FlowControl flow) { flowControl_ = flow; }
const SerialTimeouts& SerialConfig::commTimeouts() const { return commTimeouts_; }
void SerialConfig::setCommTimeouts(const SerialTimeouts& timeouts) { commTimeouts_ = timeouts; }
const SerialBuffersSize& SerialConfig::buffersSize() const { return buffersSize_; }
void SerialConfig::setBuffersSize(const SerialBuffersSize& sizes) { buffersSize_ = sizes; }

std::string SerialConfig::toString() const
{
    nvCollection pairs;
    if (!deviceName_.empty())
        pairs.setString(deviceKey, deviceName_);
    setWord(pairs, parityKey, parity_, parityWords);
    setWord(pairs, stopKey, stopBits_, stopWords);
    setWord(pairs, flowKey, flowControl_, flowWords);
    if (baudRate_ != 0)
        pairs.setUInt(baudKey, baudRate_);
    if (dataSize_ >= dataSize5 && dataSize_ <= dataSize8)
        pairs.setInt(dataKey, firstDataBits + dataSize_ - dataSize5);
    return pairs.toString(pairSeparator, nvSeparator);
}

SerialConfig SerialConfig::fromString(const std::string& text)
{
    const nvCollection pairs(text, pairSeparator, nvSeparator);
    SerialConfig config;
    if (pairs.has(deviceKey))
        config.deviceName_ = pairs.getString(deviceKey);
    if (pairs.has(parityKey))
        config.parity_ = static_cast<Parity>(wordValue(pairs.getString(parityKey), parityWords));
    if (pairs.has(stopKey))
        config.stopBits_ = static_cast<StopBits>(wordValue(pairs.getString(stopKey), stopWords));
    if (pairs.has(flowKey))
        config.flowControl_ = static_cast<FlowControl>(wordValue(pairs.getString(flowKey), flowWords));
    if (pairs.has(baudKey))
        config.baudRate_ = static_cast<unsigned int>(pairs.getInt(baudKey)); // the bit pattern
    if (pairs.has(dataKey)) {
        const int bits = pairs.getInt(dataKey);
        config.dataSize_ = bits >= 5 && bits <= 8 ? static_cast<DataSize>(bits - firstDataBits + dataSize5)
                                                  : dataSizeUnset;
    }
    return config;
}

} // namespace io
} // namespace ovo
