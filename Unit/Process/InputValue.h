/** @file
 * A quantity that the unit feeds to its channels, and where it comes from.
 */
#pragma once

#include <optional>

/** Where a value comes from. */
enum class EInputSource
{
    Constant, /**< the unit file */
    Profile,
    Set /**< a command */
};

/** A value that a command may set; otherwise the profile's, or where that says nothing the unit file's. */
class InputValue
{
public:
    explicit InputValue(double constant) : m_constant(constant), m_value(constant) {}

    void set(double value) { m_set = value; }

    /** Goes back to the profile or the unit file. */
    void release() { m_set.reset(); }

    /** Decides the value of the next step. @return value() */
    double next(const std::optional<double>& profileValue)
    {
        m_eSource = m_set ? EInputSource::Set : profileValue ? EInputSource::Profile : EInputSource::Constant;
        m_value = m_set.value_or(profileValue.value_or(m_constant));
        return m_value;
    }

    double value() const { return m_value; }
    EInputSource source() const { return m_eSource; }

private:
    double m_constant;
    std::optional<double> m_set;
    double m_value;
    EInputSource m_eSource = EInputSource::Constant;
};
