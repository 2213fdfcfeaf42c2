// The board's page: the wall mode with ?wall=1&token=..., the signed-in board otherwise.
import { startBoard } from './board.js';
import { startWall } from './wall.js';

const query = new URLSearchParams(window.location.search);
if (query.get('wall') === '1') startWall(query.get('token') ?? '');
else startBoard();
