// The developer console.

export const developerConsole = {
  'console.title': 'Developer console',
  'console.method': 'Method',
  'console.arguments': 'Arguments',
  'console.format': 'JSON; bytes as {example}',
  'console.call': 'Call',
  'console.clear': 'Clear the list',
  'console.entries': 'Calls and events, the latest first',
  'console.calledWith': 'Called with',
  'console.reply': 'Reply',
  'console.error': 'Error',
  'console.event': 'Event',
  'console.answered': '{method} answered in {time}',
  'console.failed': '{method} failed',
  'console.quick': 'under {time}',
  'console.noHex': '“{text}” is not hexadecimal.',
  'console.noBase64': '“{text}” is not base64.',
  'console.noJson': 'The arguments are not JSON. {why}',
  'console.takesMap': '“{method}” takes a map of arguments.',
  'console.requires':
    '“{method}” requires “{key}”, of the type {type}; without it the program would end.',
  'console.cut': '… The rest is not shown.',
};
