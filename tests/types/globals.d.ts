// What the module in the page's process puts on the global object; ui/engine/link.js takes it.
declare var brevanholtEngineLink:
  | {
      connect(receive: (frame: Uint8Array) => void): void;
      send(...parts: Uint8Array[]): void;
    }
  | undefined;
