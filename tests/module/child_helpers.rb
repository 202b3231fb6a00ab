# Loaded (ruby -r) into every child ruby that the module tests start: a host object shaped like
# the application's controller, and a few probes of what loading left behind.

# Stands for an AppKit progress indicator or view: records every call made on it.
class ProgressRecorder
  def initialize(log, name) = (@log, @name = log, name)
  def method_missing(method, *arguments) = (@log << [@name, method, *arguments]; nil)
  def respond_to_missing?(*) = true
end

# The application's controller: calls add_log_notes on itself, holds the progress objects.
class Controller
  attr_reader :column_headers, :log
  attr_accessor :progressIndicator, :progressView

  def initialize(progress: true, column_headers: nil)
    @log = []
    @column_headers = column_headers
    return unless progress

    @progressIndicator = ProgressRecorder.new(@log, :indicator)
    @progressView = ProgressRecorder.new(@log, :view)
  end

  def merge(*arguments) = add_log_notes(*arguments)
end

# The exception class and message of what the block raises, or nil.
def error_of
  yield
  nil
rescue Exception => e
  [e.class.name, e.message]
end

def module_state
  {
    libxml2_flag: defined?(I_KNOW_I_AM_USING_AN_OLD_AND_BUGGY_VERSION_OF_LIBXML2) &&
      I_KNOW_I_AM_USING_AN_OLD_AND_BUGGY_VERSION_OF_LIBXML2,
    frame_rates: defined?(FRAME_RATES) ? FRAME_RATES : :undefined,
    version: defined?(PELLAGO_VERSION) ? PELLAGO_VERSION : :undefined,
    temp_xml_file: defined?(TEMP_XML_FILE) ? TEMP_XML_FILE : :undefined,
    methods: Object.private_instance_methods(false) & %i[add_log_notes to_frames]
  }
end
